// KaStrCmp: the one routine in which every comparison of text in the library
// ends: as plain bytes, as a wildcard match (the second string is the
// pattern), or by collation orders, on two strings of possibly different code
// sets and languages. The string and character classes' comparisons and the
// string rows' Compare slots are built on it.
#ifndef KATYPEMGR_KASTRCMP_H_
#define KATYPEMGR_KASTRCMP_H_

#include "katypemgr/kaexport.h"

// Bits of the comparison options word (the cmp op).
inline constexpr unsigned short kKaCmpExact = 16;               // no wildcards
inline constexpr unsigned short kKaCmpIgnoreCase = 32;          // case field ignored
inline constexpr unsigned short kKaCmpIgnoreDiacritics = 64;    // diacritic field ignored
inline constexpr unsigned short kKaCmpRunningDifference = 128;  // through `result`
inline constexpr unsigned short kKaCmpSimple = 256;             // keys one by one, no levels
inline constexpr unsigned short kKaCmpStepFlag = 512;           // passed to the iterator

// Compares s1 with s2 (code units of their code sets; null pointers read as
// empty strings). Negative when s1 sorts before s2, 0 when equal or when s1
// matches the pattern s2, positive otherwise; only the sign is meant for
// ordering. No allocation; safe from several threads.
//
// In this order:
//  1. A string is null when its language is 254, or its code set 254 and its
//     language 0. Two nulls are equal; a null s2 sorts after everything; a
//     null s1 sorts first when the options are exact (16) or simple (256),
//     and is otherwise matched as an empty value.
//  2. maxLength 0 answers 0. Any negative maxLength is unlimited.
//  3. When exactly one code set is 0 it is the native code set. When both
//     are 0 the text is compared as bytes: exact or simple options compare
//     unsigned bytes (the first difference, at most maxLength of them);
//     otherwise s2 is a pattern of bytes "*" and "?", without escape, matched
//     with backtracking; a value that agrees over maxLength bytes matches.
//  4. Otherwise the texts are compared by collation orders, through
//     KaStringIterator in their own code sets (255 is read as the default
//     16-bit set, as the iterator reads it). Each order o becomes a key in
//     the string's language L: L in the top byte, then o, except that for a
//     letter (bit 14 of o, below 32768) in any language but 20 the order's
//     low seven bits (base letter, extension) move above its bits 7..13, which
//     become key bits 0..4 (diacritic) and 5..6 (case). Options 32 and 64
//     mask key bits 5..6 and 0..4 away.
//
// Simple (256): keys character by character; the answer is the first
// difference of the masked keys (key1 - key2; the end of a text is key 0).
//
// Otherwise the multi-level walk. Pairs of orders with equal masked keys go
// on; the first pair that differs in the primary part (key bits 7 and up)
// decides; pairs that differ below it are kept as levels: the last diacritic
// difference and the first case difference (s2's minus s1's, so that a
// lower-case letter comes before its capital). When both texts end, the
// answer is the diacritic level (mode 0 only: in mode 1, the string classes'
// mode, diacritics break no ties and are as invisible to the walk as what the
// mask removes), else the case level (unless 32), else, for an exact
// comparison, the difference of the numbers of characters (a ligature against
// its spelled-out letters), else 0. A difference too large for an int is
// answered as INT_MAX or -INT_MAX.
//
// Wildcards, unless exact: in s2, a character whose first order is
// KaString::GetAsterisk() stands for any run of characters (a run of them
// for one), GetQuestion() for one whole character (a value at its end
// answers -1), and GetEscape() makes the next character literal (at the end
// of the pattern it stands for itself). A run of stars saves one resume
// state (value position, pattern position after the stars, levels) and
// scans the value for the first character whose first order's key equals the
// pattern element after the stars; a later mismatch, including a difference
// below the primary level, returns to that state one character further on.
// Keeping only the latest star's state gives the same answers as keeping one
// per star: a match an earlier star could reach by taking more, the latest
// star reaches too. A run of stars ending the pattern matches the rest, and
// the answer is the levels gathered before it; a star reached at the end of
// the value answers -1, a scan that finds nothing a negative difference.
//
// maxLength counts characters (all the orders of an expansion belong to
// their character). Exact and simple comparisons read both texts as if they
// ended after maxLength characters; a wildcard walk stops when it has taken
// maxLength characters of s1, and answers as if the pattern ended there.
//
// Option bits read here: 16 exact, 32 ignore case, 64 ignore diacritics,
// 128 running difference, 256 simple, 512 one order per character (an order
// expansion, such as a ligature's second letter, is skipped). With 128 and a
// non-null `result`, the collating comparisons store through it 0 at the
// start and, after each pair of characters within maxLength on both sides,
// the answer the comparison would give if both texts ended there (the length
// level aside); the byte paths and the null cases leave it untouched.
// `mode` is 1 in every call of the string and character classes.
KATYPEMGR_API int KaStrCmp(unsigned char codeSet1, unsigned char language1, const void* s1,
                           unsigned char codeSet2, unsigned char language2, const void* s2,
                           unsigned short cmpOp, short maxLength, unsigned char mode, int* result);

#endif  // KATYPEMGR_KASTRCMP_H_
