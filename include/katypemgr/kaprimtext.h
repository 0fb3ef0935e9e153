// Text of the primitive values: the PrintToString, ScanFromString, ConvertTo
// and ConvertFrom slots of the rows o_char, o_u1b, o_2b, o_u2b, o_4b, o_u4b,
// BlockId, int, unsigned, enum, o_float, o_double, o_8b and o_u8b.
//
// Element types (what the rows' Create makes and Delete frees, and what
// ConvertFrom allocates the same way, `new (std::nothrow) T[count]()`):
//   o_char signed char, o_u1b unsigned char, o_2b int16_t, o_u2b uint16_t,
//   o_4b int32_t, o_u4b and BlockId uint32_t, int and enum int, unsigned
//   unsigned, o_float float, o_double double, o_8b int64_t, o_u8b uint64_t.
//
// Formats. A caller's format is used as the C library would use it with a
// variable of the row's type, wherever that cannot read or write outside the
// value; anything that could is refused (below). A format holds literal
// text, any number of "%%", in scanning any number of suppressed conversions
// ("%*" and a d, i, o, u, x, X, floating, c, s or "[...]" conversion), and at
// most one value conversion
//   %[flags][width][.precision][length]conversion
// with flags from "-+ #0", width and precision as digits of at most 255, and
// a conversion of the row's kind:
//   one-byte rows   c, d, i, o, u, x, X
//   integer rows    d, i, o, u, x, X
//   floating rows   e, E, f, F, g, G, a, A; or a format beginning "ldexp("
//                   with a floating conversion followed by a d or i
//                   conversion (mantissa and exponent, see below)
// A format with no value conversion prints its literal text ("%%" as "%")
// and stores nothing. A flag or precision the C library leaves undefined for
// the conversion ("#" with d, i, u or c; "0" or a precision with c) is
// dropped.
//
// Length modifiers apply, sized as in the runtime the stored formats were
// written for: hh 8 bits, h 16, none, l, I32, I, z and t 32 (that runtime's
// long is 32 bits, so "%ld" on the 32-bit rows reads them whole), ll, I64
// and j 64; on floating conversions l and L name a double (that runtime's
// long double). Rows that share a function differ only by their default
// format ("%hd"/"%hu", "%ld"/"%lu"/"#%lu", "%d"/"%u", "%I64d"/"%I64u"), so
// the conversion letter says how the element's bits read: d and i as the
// signed row, u, o, x and X as the unsigned one. The value then passes
// through the type the modifier names, as printf converts its argument:
// "%hd" on an o_4b holding 65541 prints "5", "%lld" on an o_2b holding -1
// prints "-1" and "%llu" prints "65535".
//
// Refused, as the C library would read or write outside the value: "%n";
// "%s", "%c", "%p" or any other conversion of another kind ("%c" on a number,
// "%d" on a floating row); a second value conversion (but for the "ldexp("
// pair); a width or precision of "*" in printing; positional "n$"; a
// modifier the letter does not take ("%Ld", "%lc", "%hf"); an unknown
// letter or a lone "%"; a width or precision above 255; a format longer than
// 255 bytes. Printing with a refused or null format uses the family's
// default instead: "%c"; "%hd"/"%hu", "%ld"/"%lu", "%d"/"%u",
// "%I64d"/"%I64u" (signed or unsigned as the first conversion letter of the
// refused format says, signed when it names none); "%.17g". Scanning with a
// refused format reads nothing and leaves the destination as it was, as a
// text that matches nothing; a null one reads with the default.
//
// Printing replaces the output's text (default 8-bit code set and language).
// A null `values` leaves the output as it was. The one-byte rows print all
// `count` bytes, printable ones (0x20..0x7E, the C locale's isprint on the
// unsigned byte) through the format and every other byte as "0x%02x"
// ("0x07", "0xe9"); scanning reads that form back: a text that is exactly
// "0x" and two hex digits (either case) naming a byte that is not printable
// is that byte, whatever accepted format is given (a printable byte prints as
// itself, so "0x41" is left to the format: "%c" reads '0'). The other rows
// print the first element only and do not read `count`.
// Floating values: -infinity, +infinity and NaN print as "-Infinity",
// "Infinity" and "NaN" whatever the format; an "ldexp(" format prints the
// frexp split of the value, e.g. "ldexp(%.17g,%d)" gives "ldexp(0.75,3)" for
// 6.0 (the exponent through its conversion's type; the mantissa is a
// double). With "%.17g" (the default) every finite double prints exactly.
//
// Scanning: a null destination answers null. Text in a 2-byte code set is
// first converted into the default 8-bit code set. The text is then read with
// sscanf's rules into the first element: literal text must match, blanks in
// the format match any blanks, a width is the longest field, a suppressed
// conversion ("%*s", "%*[^,]", "%*d") reads and skips its field, flags and
// precision (print-only) are ignored. The value is read into a temporary of
// the type the conversion names and then assigned to the element as C
// converts that type to the row's: "%hd" stores 70000 as 4464 and -1 into an
// o_4b as -1, "%hu" stores -1 into an o_4b as 65535, "%d" into an o_8b
// keeps 32 bits. Nothing is ever written past the element: "%5c" reads five
// characters and the element keeps the first. Floating conversions read a
// float without a modifier on o_float, a double with l or L, rounded then to
// float; o_double reads a double either way (the shared default "%.17g" is
// handed to the scan and must read a double back). A text that matches
// nothing leaves the destination unchanged; the destination is answered in
// every case. Before the format is applied, the floating rows recognise
// "Infinity", "-Infinity" and "NaN" (after leading blanks, ending the text or
// followed by a blank), so that printing and scanning round-trip for every
// value. An "ldexp(" format reads the mantissa and the exponent and answers
// ldexp(mantissa, exponent), the exponent clamped to +-100000.
//
// ConvertTo makes a holder (type id 11, no manager) of `count` new strings,
// element i printed with the function's default format; null for null values
// or when memory is short. ConvertFrom answers a new array of `count`
// elements scanned with the default format from holder->GetString(i); an
// element whose string is missing or does not match is 0. Null for a null
// holder or when memory is short (after KaCallMemoryHandler).
// The ConvertTo/From pair of o_u4b serves BlockId as well and uses "%lu".
#ifndef KATYPEMGR_KAPRIMTEXT_H_
#define KATYPEMGR_KAPRIMTEXT_H_

#include "katypemgr/kaexport.h"

class KaString;
class KaTypeConvertData;

// --- PrintToString ---------------------------------------------------------------
KATYPEMGR_API KaString& CharPrintToKaString(KaString& out, void* values, const char* format,
                                            unsigned int count);  // o_char, o_u1b
KATYPEMGR_API KaString& ShortPrintToKaString(KaString& out, void* values, const char* format,
                                             unsigned int count);  // o_2b, o_u2b
KATYPEMGR_API KaString& LongPrintToKaString(KaString& out, void* values, const char* format,
                                            unsigned int count);  // o_4b, o_u4b, BlockId
KATYPEMGR_API KaString& IntPrintToKaString(KaString& out, void* values, const char* format,
                                           unsigned int count);  // int, unsigned, enum
KATYPEMGR_API KaString& FloatPrintToKaString(KaString& out, void* values, const char* format,
                                             unsigned int count);  // o_float
KATYPEMGR_API KaString& DoublePrintToKaString(KaString& out, void* values, const char* format,
                                              unsigned int count);  // o_double
KATYPEMGR_API KaString& O_8BPrintToKaString(KaString& out, void* values, const char* format,
                                            unsigned int count);  // o_8b, o_u8b

// --- ScanFromString --------------------------------------------------------------
KATYPEMGR_API void* CharScanFromKaString(void* values, KaString& text, const char* format,
                                         unsigned int count);
KATYPEMGR_API void* ShortScanFromKaString(void* values, KaString& text, const char* format,
                                          unsigned int count);
KATYPEMGR_API void* LongScanFromKaString(void* values, KaString& text, const char* format,
                                         unsigned int count);
KATYPEMGR_API void* IntScanFromKaString(void* values, KaString& text, const char* format,
                                        unsigned int count);
KATYPEMGR_API void* FloatScanFromKaString(void* values, KaString& text, const char* format,
                                          unsigned int count);
KATYPEMGR_API void* DoubleScanFromKaString(void* values, KaString& text, const char* format,
                                           unsigned int count);
KATYPEMGR_API void* O_8BScanFromKaString(void* values, KaString& text, const char* format,
                                         unsigned int count);

// --- ConvertTo: values to a holder of strings -----------------------------------------
KATYPEMGR_API KaTypeConvertData* CharConvertToKaString(void* values,
                                                       unsigned int count);  // o_char "%c"
KATYPEMGR_API KaTypeConvertData* O_U1BConvertToKaString(void* values,
                                                        unsigned int count);  // o_u1b "%c"
KATYPEMGR_API KaTypeConvertData* ShortConvertToKaString(void* values,
                                                        unsigned int count);  // o_2b "%hd"
KATYPEMGR_API KaTypeConvertData* WordConvertToKaString(void* values,
                                                       unsigned int count);  // o_u2b "%hu"
KATYPEMGR_API KaTypeConvertData* LongConvertToKaString(void* values,
                                                       unsigned int count);  // o_4b "%ld"
KATYPEMGR_API KaTypeConvertData* DwordConvertToKaString(void* values,
                                                        unsigned int count);  // o_u4b "%lu"
KATYPEMGR_API KaTypeConvertData* IntConvertToKaString(void* values,
                                                      unsigned int count);  // int "%d"
KATYPEMGR_API KaTypeConvertData* UnsignedConvertToKaString(void* values,
                                                           unsigned int count);  // "%u"
KATYPEMGR_API KaTypeConvertData* FloatConvertToKaString(void* values,
                                                        unsigned int count);  // "%.17g"
KATYPEMGR_API KaTypeConvertData* DoubleConvertToKaString(void* values,
                                                         unsigned int count);  // "%.17g"
KATYPEMGR_API KaTypeConvertData* O_8BConvertToKaString(void* values,
                                                       unsigned int count);  // "%I64d"
KATYPEMGR_API KaTypeConvertData* O_U8BConvertToKaString(void* values,
                                                        unsigned int count);  // "%I64u"

// --- ConvertFrom: a holder of strings to a new value array -------------------------------
KATYPEMGR_API void* CharConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* O_U1BConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* ShortConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* WordConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* LongConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* DwordConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* IntConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* UnsignedConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* FloatConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* DoubleConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* O_8BConvertFromKaString(KaTypeConvertData* strings, unsigned int count);
KATYPEMGR_API void* O_U8BConvertFromKaString(KaTypeConvertData* strings, unsigned int count);

#endif  // KATYPEMGR_KAPRIMTEXT_H_
