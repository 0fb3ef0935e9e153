// Descriptions of collation orders: what kind of character an order stands
// for, told as text, as a representative 1-byte character, or as the digit
// value or symbol index it carries. The layout of an order is kai18n/order.h.
//
// Han orders (bit 15 set) carry no fields, and in an ideographic language
// (the low seven bits of the language byte 20 or more, so 148 counts as 20
// while 128 counts as 0) no order is taken apart: both are described by
// number only.
#ifndef KATYPEMGR_KAORDER_H_
#define KATYPEMGR_KAORDER_H_

#include "kai18n/order.h"
#include "katypemgr/kaexport.h"

class KaString;

// Sets `text` (in the default 8-bit code set and language) to an English
// description of `order` and answers 0:
//   Han order or ideographic language  "HAN character 0x8000\n" (the order in
//                                      four hex digits; the newline belongs
//                                      to the text)
//   13                                 "undefined ordering indicator"
//   0 .. 79 otherwise                  "space"
//   80 .. 16127                        "symbol " and the symbol's name ("symbol
//                                      solidus"), or "symbol " alone for an
//                                      index without a name
//   16128 .. 16383                     "digit 2", then " with expand" when
//                                      bit 0 is set
//   16384 .. 32767                     "lower " or "upper ", "letter ", the
//                                      letter (base index + 62, + 32 in lower
//                                      case), " with " and the diacritic's
//                                      name (" with " alone for a diacritic
//                                      above 14), " with extension" when the
//                                      extension field is non-zero
// Should the description fail to allocate, `text` reads "unknown".
KATYPEMGR_API int KaConvertOrderToString(unsigned short order, unsigned char language,
                                         KaString& text);

// Sets `ch` to a character of code set 1 that stands for `order` and answers
// 0. 7 means there is none: Han orders, ideographic languages, spaces and
// symbols without a character. Symbols give their own ASCII character, or "."
// for those named in words (but "/" for the solidus and "'" for the
// apostrophe); digits give "0" + value; letters give their base letter (base
// index + 62, + 32 in lower case). When `searchAccented` is non-zero and the
// letter has a diacritic, the first byte of 128..255 in code set 1 whose
// collation order equals `order` is taken instead, if there is one.
// When `name` is not null it receives the Unicode name of `ch` in code set 1
// ("LATIN SMALL LETTER E WITH ACUTE"), static text, or null for a byte
// without a name: the controls (7 among them) and the bytes code set 1 leaves
// undefined.
KATYPEMGR_API int KaConvertOrderToChar(unsigned short order, unsigned char language,
                                       unsigned char& ch, int searchAccented, const char** name);

// For a digit order (16128 .. 16383): stores the digit value (bit 0 cleared,
// then (order - 16128) / 10) and the expand flag (bit 0) and answers 0.
// Answers -2002 for any other order and leaves both outputs untouched.
KATYPEMGR_API int KaExtractDigitFromOrder(unsigned short order, unsigned short& value,
                                          unsigned short& expand);

// For a symbol order (80 .. 16127): stores the symbol index order - 80 and
// answers 0. Answers -2002 for any other order (spaces too, whose index would
// wrap below zero) and leaves `index` untouched.
KATYPEMGR_API int KaExtractSymbolFromOrder(unsigned short order, unsigned short& index);

#endif  // KATYPEMGR_KAORDER_H_
