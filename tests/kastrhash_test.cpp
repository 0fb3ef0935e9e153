// String hashing: the key of one text, the whole-string hashes, and the string
// rows' Hash slots over memory arrays and hand-built stored images of both
// byte orders, cut keys and the buffer walk.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "katypemgr/kaistring.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"
#include "katypemgr/katyphash.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Units = std::u16string;
constexpr unsigned kM = kKaHashMultiplier;
constexpr unsigned kNullKey = 0xFEFE7575u;

unsigned Hash1(unsigned char codeSet, unsigned char language, std::string text, short count = -1) {
  return HashString(codeSet, language, text.data(), count, 0);
}
unsigned Hash16(unsigned char codeSet, unsigned char language, Units units, short count = -1) {
  return HashString(codeSet, language, reinterpret_cast<char*>(units.data()), count, 0);
}

KaString Text(const std::string& text, unsigned char codeSet = 1, unsigned char language = 0) {
  KaString s(codeSet, language);
  s << text.c_str();
  return s;
}
KaString Wide(const Units& units, unsigned char codeSet = 253, unsigned char language = 0) {
  KaString s(reinterpret_cast<const unsigned short*>(units.c_str()));
  s.SetCodeSetCode(codeSet);
  s.SetLanguage(language);
  return s;
}

// A stored element laid out by hand: length N, code set, language, the units
// in the order of the format nibble, then 0x00 0xFF.
void AppendStored(Bytes& out, unsigned char codeSet, unsigned char language, const Bytes& units,
                  bool bigEndian) {
  const auto n = static_cast<unsigned short>(units.size() + 4);
  out.insert(out.end(), {static_cast<unsigned char>(bigEndian ? n >> 8 : n),
                         static_cast<unsigned char>(bigEndian ? n : n >> 8), codeSet, language});
  out.insert(out.end(), units.begin(), units.end());
  out.insert(out.end(), {0x00, 0xFF});
}
Bytes Narrow(const std::string& text) { return Bytes(text.begin(), text.end()); }
Bytes UnitBytes(const Units& units, bool bigEndian) {
  Bytes b;
  for (char16_t u : units) {
    const auto hi = static_cast<unsigned char>(u >> 8), lo = static_cast<unsigned char>(u);
    b.insert(b.end(), {bigEndian ? hi : lo, bigEndian ? lo : hi});
  }
  return b;
}

unsigned Slot(KaHashFunc f, unsigned char format, Bytes& image, unsigned count, int& status,
              unsigned length) {
  return f(format, length, image.data(), count, status);
}

TEST(HashString, NullStringsCountsAndCodeSetZero) {
  EXPECT_EQ(kNullKey, Hash1(1, 254, "abc")) << "language 254 is the null string";
  EXPECT_EQ(kNullKey, Hash1(254, 0, "abc")) << "code set 254 with language 0 too";
  EXPECT_EQ(kNullKey, HashString(1, 254, nullptr, 0, 0)) << "null before the count";
  EXPECT_EQ(0u, Hash1(1, 0, "abc", 0));
  EXPECT_EQ(0u, Hash1(1, 0, "abc", -2)) << "negative counts other than -1";
  EXPECT_EQ(0u, Hash1(1, 0, ""));
  EXPECT_EQ(0u, HashString(1, 0, nullptr, -1, 0));
  // Code set 0 folds the bytes themselves, unsigned.
  EXPECT_EQ(9u * 'a' + 'b', Hash1(0, 0, "ab"));
  EXPECT_EQ(Hash1(0, 0, "ab"), Hash1(0, 0, "abc", 2));
  EXPECT_EQ(Hash1(1, 3, "ab"), Hash1(1, 3, "abc", 2));
}

TEST(HashString, LatinLettersMoveTheirBaseLetterExceptInLanguage20) {
  KaStringIterator it("a", 1, 0);
  const unsigned o = it.GetNextOrder(0);
  ASSERT_NE(0u, o & 0x4000) << "a Latin letter";
  ASSERT_LT(o, 0x8000u);
  const unsigned fields = ((o & 0x407F) << 8) + ((o >> 7) & 0x7F);
  EXPECT_EQ(fields, Hash1(1, 0, "a"));
  EXPECT_EQ((3u << 24) + fields, Hash1(1, 3, "a"));
  EXPECT_EQ((20u << 24) + (o << 8), Hash1(1, 20, "a")) << "the raw order for 20 only";
  EXPECT_EQ((21u << 24) + fields, Hash1(1, 21, "a")) << "other ideographic languages";
  EXPECT_EQ((0x94u << 24) + fields, Hash1(1, 0x94, "a")) << "whose low bits are 20";
  KaStringIterator digit("7", 1, 0);
  EXPECT_EQ((3u << 24) + (digit.GetNextOrder(0) << 8), Hash1(1, 3, "7")) << "no letter: raw";
}

TEST(HashString, SameCharactersHashAlikeInEveryCodeSet) {
  // "Müller" in Windows-1252 bytes, ISO-8859-1 bytes and Unicode units.
  const unsigned narrow = Hash1(1, 0, "M\xFCller");
  EXPECT_NE(0u, narrow);
  EXPECT_EQ(narrow, Hash1(2, 0, "M\xFCller"));
  EXPECT_EQ(narrow, Hash16(253, 0, u"M\u00FCller"));
  EXPECT_EQ(narrow, Hash1(255, 0, "M\xFCller")) << "255 is the default 8-bit code set";
  EXPECT_NE(narrow, Hash1(1, 0, "Muller")) << "the diacritic enters the key";
  EXPECT_NE(narrow, Hash1(1, 0, "m\xFCller")) << "so does the case";
}

TEST(HashString, CountCountsUnitsAndAnExpansionDeliversAllItsOrders) {
  // The ligature expands into two orders; a count of one unit takes both.
  EXPECT_EQ(Hash1(1, 0, "\xE6"), Hash1(1, 0, "\xE6z", 1));
  EXPECT_NE(Hash1(1, 0, "a"), Hash1(1, 0, "\xE6"));
  // A counted text goes on past a zero unit, which has order 0 (key 0).
  std::string withZero("a\0b", 3);
  const unsigned a = Hash1(1, 0, "a"), b = Hash1(1, 0, "b");
  EXPECT_EQ(81 * a + b, HashString(1, 0, withZero.data(), 3, 0));
  EXPECT_EQ(a, HashString(1, 0, withZero.data(), -1, 0));
}

TEST(HashKaString, SignedBytesSixteenBitUnitsAndSevenBits) {
  EXPECT_EQ(9u * 'a' + 'b', HashKaString(Text("ab")));
  EXPECT_EQ(9u * 'a' + 0xFFFFFFE9u, HashKaString(Text("a\xE9"))) << "bytes enter signed";
  EXPECT_EQ(9u * 'a' + 0x69, HashKaString7(Text("a\xE9")));
  EXPECT_EQ(9u * 0x41 + 0xE9, HashKaString(Wide(u"A\u00E9"))) << "units enter unsigned";
  EXPECT_EQ(0x2Du, HashKaString7(Wide(u"\u4E2D")));
  EXPECT_EQ(0x4E2Du, HashKaString(Wide(u"\u4E2D", 254, 5))) << "every code set above 224";
  EXPECT_EQ(0u, HashKaString(KaString()));
  EXPECT_EQ(HashKaString(Text("ab", 1, 0)), HashKaString(Text("ab", 3, 7)))
      << "code set and language do not enter";
}

TEST(StringHashSlot, MemoryArrayFoldsTheKeysOnce) {
  KaString v[3] = {Text("abc", 1, 3), KaString(), KaString()};
  v[1].SetNullValue();
  int status = -1;
  EXPECT_EQ((Hash1(1, 3, "abc") ^ kNullKey) * kM, StringHash(8, 0, v, 3, status));
  EXPECT_EQ(0, status);
  EXPECT_EQ(kNullKey * kM, StringHash(8, 0, v + 1, 1, status)) << "a null element";
  EXPECT_EQ(0u, StringHash(8, 0, v, 0, status));
  EXPECT_EQ(0, status);
  KaString same[2] = {Text("abc"), Text("abc")};
  EXPECT_EQ(0u, StringHash(8, 0, same, 2, status)) << "equal keys cancel";
  // A memory buffer shorter than the array.
  EXPECT_EQ(Hash1(1, 3, "abc") * kM, StringHash(8, sizeof(KaString) + 1, v, 3, status));
  EXPECT_EQ(kKaArrayBoundExceeded, status);
}

// The values of the round-trip tests, in memory and as stored elements.
struct Element {
  unsigned char codeSet, language;
  std::string narrow;  // 1-byte code sets
  Units wide;          // 2-byte code sets
  const char* why;
};

std::vector<Element> RoundTripElements() {
  Units longWide;
  for (int i = 0; i < 300; ++i) longWide.push_back(static_cast<char16_t>(0x3B1 + i % 20));
  return {
      {1, 0, "M\xFCller", {}, "1-byte text"},
      {1, 254, "", {}, "null string"},
      {1, 0, "", {}, "empty string"},
      {253, 3, "", u"Stra\u00DFe \u4E2D", "Unicode text"},
      {253, 0, "", longWide, "Unicode text of several work-buffer pieces"},
      {3, 7, std::string(400, 'q'), {}, "1-byte text beyond the work buffer"},
      {0, 0, "\x80\xFF", {}, "native code set: bytes"},
  };
}

KaString MemoryValue(const Element& e) {
  KaString s =
      e.codeSet > 224 ? Wide(e.wide, e.codeSet, e.language) : Text(e.narrow, e.codeSet, e.language);
  if (e.language == 254) s.SetNullValue();
  return s;
}

Bytes StoredImage(const std::vector<Element>& elements, bool bigEndian) {
  Bytes image;
  for (const Element& e : elements) {
    AppendStored(image, e.language == 254 ? 0 : e.codeSet, e.language,
                 e.codeSet > 224 ? UnitBytes(e.wide, bigEndian) : Narrow(e.narrow), bigEndian);
  }
  return image;
}

TEST(StringHashSlot, StoredArraysHashAsTheirValuesInMemory) {
  const std::vector<Element> elements = RoundTripElements();
  std::vector<KaString> memory;
  for (const Element& e : elements) memory.push_back(MemoryValue(e));
  for (size_t i = 0; i < elements.size(); ++i) {
    SCOPED_TRACE(elements[i].why);
    int status = -1;
    const unsigned inMemory = StringHash(8, 0, &memory[i], 1, status);
    for (unsigned char format : {0x02, 0x03, 0x01, 0x42}) {
      SCOPED_TRACE(format);
      Bytes image = StoredImage({elements[i]}, (format & 0x0F) == 2);
      EXPECT_EQ(inMemory, Slot(StringHash, format, image, 1, status, image.size()));
      EXPECT_EQ(0, status);
      EXPECT_EQ(inMemory, Slot(StringHash, format, image, 1, status, 0)) << "not bounded";
    }
  }
  int status = -1;
  const unsigned all = StringHash(8, 0, memory.data(), memory.size(), status);
  for (bool big : {false, true}) {
    Bytes image = StoredImage(elements, big);
    EXPECT_EQ(all, Slot(StringHash, big ? 2 : 3, image, memory.size(), status, image.size()));
    EXPECT_EQ(0, status);
    EXPECT_EQ(all, Slot(StringHash, big ? 2 : 3, image, memory.size(), status, 0));
  }
}

TEST(StringHashSlot, CollationOrderTextsDropTheirLanguageFlag) {
  const Units orders = u"\u4123\u5000";
  for (bool big : {false, true}) {
    Bytes image;
    AppendStored(image, 254, 0x85, UnitBytes(orders, big), big);
    AppendStored(image, 254, 0x80, UnitBytes(orders, big), big);
    int status = -1;
    EXPECT_EQ((Hash16(254, 5, orders) ^ kNullKey) * kM,
              Slot(StringHash, big ? 2 : 3, image, 2, status, image.size()))
        << "language 0x80 becomes 0: the null string";
  }
}

// Every cut of a stored 1-byte and 2-byte element, in both byte orders.
TEST(StringHashSlot, CutKeysHashTheirWholeUnitsUpTo253Bytes) {
  const std::string narrow(300, 'k');
  Units wide;
  for (int i = 0; i < 150; ++i) wide.push_back(static_cast<char16_t>(0x430 + i % 32));
  for (bool big : {false, true}) {
    for (bool two : {false, true}) {
      SCOPED_TRACE(std::string(big ? "big" : "little") + (two ? " 16-bit" : " 8-bit"));
      Bytes image;
      AppendStored(image, two ? 253 : 1, 2, two ? UnitBytes(wide, big) : Narrow(narrow), big);
      AppendStored(image, 1, 2, Narrow("next"), big);
      for (unsigned length = 5; length < 4 + 300; ++length) {
        const unsigned available = length - 4;
        int status = 0;
        const unsigned got = Slot(StringHash, big ? 2 : 3, image, 2, status, length);
        if (available >= 254) {
          EXPECT_EQ(0u, got) << available;
          EXPECT_EQ(kKaNotSupported, status) << available;
          continue;
        }
        const unsigned expected = two ? Hash16(253, 2, wide, available / 2)
                                      : Hash1(1, 2, narrow, static_cast<short>(available));
        EXPECT_EQ(expected * kM, got) << available;
        EXPECT_EQ(kKaArrayBoundExceeded, status) << available;
      }
    }
  }
}

TEST(StringHashSlot, ElementsPastTheBufferStopWith2101) {
  Bytes image;
  AppendStored(image, 1, 0, Narrow("ab"), false);
  const unsigned firstSize = image.size();
  AppendStored(image, 1, 0, Narrow("cd"), false);
  const unsigned first = Hash1(1, 0, "ab");
  const unsigned both = first ^ Hash1(1, 0, "cd");
  struct Case {
    unsigned length, count, expected;
    int status;
    const char* why;
  };
  const Case cases[] = {
      {0, 2, both * kM, 0, "not bounded"},
      {firstSize, 1, first * kM, 0, "exactly the first element"},
      {firstSize, 2, first * kM, kKaArrayBoundExceeded, "the second starts at the end"},
      {firstSize + 3, 2, first * kM, kKaArrayBoundExceeded, "the second's header is cut"},
      {firstSize + 4, 2, (first ^ 0) * kM, 0, "nothing of its text: key 0"},
      {static_cast<unsigned>(image.size()), 3, both * kM, kKaArrayBoundExceeded, "count too big"},
      {3, 1, 0, kKaArrayBoundExceeded, "a buffer shorter than one header"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    int status = -1;
    EXPECT_EQ(c.expected, Slot(StringHash, 3, image, c.count, status, c.length));
    EXPECT_EQ(c.status, status);
  }
  int status = 0;
  EXPECT_EQ(0u, StringHash(3, 0, nullptr, 1, status));
  EXPECT_EQ(kKaArrayBoundExceeded, status);
}

TEST(StringHashSlot, OlderZeroTerminatedFormHashesAsItsLoadedValues) {
  // One length word (the texts' span less two), then the texts back to back.
  Bytes image = {0x06, 0x00, 'a', 'b', 0, 'c', 'd', 0};
  KaString loaded[2];
  loaded[0] = "ab";
  loaded[1] = "cd";
  int status = -1;
  const unsigned expected = StringHash(8, 0, loaded, 2, status);
  EXPECT_EQ(expected, Slot(StringHash, 3, image, 2, status, 0));
  EXPECT_EQ(0, status);
  EXPECT_EQ(expected, Slot(StringHash, 3, image, 2, status, image.size()));
  EXPECT_EQ(expected, Slot(StringHash, 3, image, 3, status, image.size()));
  EXPECT_EQ(kKaArrayBoundExceeded, status) << "a third text is not there";
  Bytes big = {0x00, 0x06, 'a', 'b', 0, 'c', 'd', 0};
  EXPECT_EQ(expected, Slot(StringHash, 2, big, 2, status, big.size()));
}

TEST(StringHashSlot, FoldedStringsKeyAsWindows1252TextOfLanguage0) {
  KaIString i[2] = {KaIString("Abc"), KaIString("M\xFCller")};
  KaCaseIString c[2] = {KaCaseIString("Abc"), KaCaseIString("M\xFCller")};
  KaString s[2] = {Text("Abc", 1, 0), Text("M\xFCller", 1, 0)};
  int status = -1;
  const unsigned expected = StringHash(8, 0, s, 2, status);
  EXPECT_EQ(expected, KaIStringHash(8, 0, i, 2, status));
  EXPECT_EQ(expected, KaCaseIStringHash(8, 0, c, 2, status));
  Bytes image;
  AppendStored(image, 1, 0, Narrow("Abc"), true);
  AppendStored(image, 1, 0, Narrow("M\xFCller"), true);
  EXPECT_EQ(expected, Slot(KaIStringHash, 2, image, 2, status, image.size()));
  EXPECT_EQ(expected, Slot(KaCaseIStringHash, 2, image, 2, status, 0));
  KaIString empty[1];
  EXPECT_EQ(0u, KaIStringHash(8, 0, empty, 1, status));
}

TEST(StringHashSlot, TheRowsCarryTheSlots) {
  KaTypeMgr m;
  KaString v[2] = {Text("x"), Text("yz")};
  KaIString iv[1] = {KaIString("x")};
  KaCaseIString cv[1] = {KaCaseIString("x")};
  int error = -1, status = -1;
  EXPECT_EQ(StringHash(8, 0, v, 2, status), m.Hash(KaSTRING_T, 0, v, 2, 8, error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(StringHash(8, 0, v, 1, status), m.Hash(KaISTRING_T, 0, iv, 1, 8, error));
  EXPECT_EQ(StringHash(8, 0, v, 1, status), m.Hash(KaCASEISTRING_T, 0, cv, 1, 8, error));
}

}  // namespace
