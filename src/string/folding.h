// The folding tables of the case-insensitive strings, one byte at a time;
// private to the library (and its test).
#ifndef KATYPEMGR_SRC_STRING_FOLDING_H_
#define KATYPEMGR_SRC_STRING_FOLDING_H_

namespace ka {

// The place of one byte in a sort alphabet: its sort byte and an extra. An
// extra of 0 is none, 1..8 a diacritic weight, 9 or more a second sort byte
// (the byte expands into two, as a ligature does).
struct FoldedByte {
  unsigned char sort;
  unsigned char extra;
};

FoldedByte FoldIStringByte(unsigned char c);
FoldedByte FoldCaseIStringByte(unsigned char c);

}  // namespace ka

#endif  // KATYPEMGR_SRC_STRING_FOLDING_H_
