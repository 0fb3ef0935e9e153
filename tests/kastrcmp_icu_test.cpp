// KaStrCmp's default comparison against an independent reference: on a few
// thousand random strings (Latin-1 and Unicode, mixed case and accents) it
// must agree in sign with the root collator at the strength that weighs what
// it weighs. The string classes compare with cmp op 16 and mode 1: letters
// first, then case (lower case first), and diacritics not at all; that is the
// root collator at primary strength with the case level on.
//
// Deliberate differences, left out of the random alphabet and pinned below:
//   - Characters that expand (the sharp s, ligatures) equal their expansion
//     in every weight the reference compares, but the strings differ in
//     length, which decides last here: "stra\u00dfe" and "strasse" differ.
//   - Letters outside Latin have no case field in the order layout: a Greek
//     or Cyrillic capital differs from its small letter at the first level,
//     so "\u0411a" sorts after "\u0431b" here and before it in the reference.
//     The random Unicode alphabet draws their small letters only.
//   - Symbols and punctuation follow the order layout (spaces, then symbols
//     by their own indices), not the reference's groups; only the blank and
//     the digits, whose places agree, are drawn.
#include <gtest/gtest.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "katypemgr/kastrcmp.h"

namespace {

int Sign(int v) { return (v > 0) - (v < 0); }

constexpr unsigned short kDefault = 16;

// Latin-1 text of code set 1 and its UTF-16 form (the same characters).
const char kLatin1Alphabet[] =
    "aabcdeefghijklmnnoprsstuvwxyzAABCDEEFGHIJKLMNOPRSTUVWXYZ 0123456789"
    "\xE0\xE1\xE2\xE4\xE7\xE8\xE9\xEA\xEB\xED\xF1\xF3\xF6\xFA\xFC"
    "\xC0\xC1\xC4\xC7\xC8\xC9\xD1\xD6\xDC";
// Unicode text: Latin with accents beyond Latin-1, Greek and Cyrillic.
const char16_t kUnicodeAlphabet[] =
    u"abcdeghlnorstzABCDEGHLNORSTZ 0123456789\u00e9\u00c9\u0107\u0106\u010d\u010c\u0161"
    u"\u0160\u017e\u017d\u0119\u0142\u0141"
    u"\u03b1\u03b2\u03b3\u03b4\u03b5\u03ba\u03bb\u03bc"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u043a\u043b\u043c\u0436";

class DefaultOrderAgainstRoot : public ::testing::Test {
 protected:
  void SetUp() override {
    UErrorCode status = U_ZERO_ERROR;
    collator_.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    collator_->setStrength(icu::Collator::PRIMARY);
    collator_->setAttribute(UCOL_CASE_LEVEL, UCOL_ON, status);
    ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  }

  int Reference(const std::u16string& a, const std::u16string& b) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString ua(a.data(), static_cast<int32_t>(a.size()));
    const icu::UnicodeString ub(b.data(), static_cast<int32_t>(b.size()));
    return Sign(collator_->compare(ua, ub, status));
  }

  std::unique_ptr<icu::Collator> collator_;
};

// Pairs that often share a prefix, so that later characters and the case
// level decide as well as the first letter.
template <typename Char, size_t N>
std::vector<std::basic_string<Char>> RandomPairs(unsigned seed, const Char (&alphabet)[N],
                                                 size_t pairs) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<size_t> len(0, 12), pick(0, N - 2);
  auto word = [&] {
    std::basic_string<Char> w;
    for (size_t i = len(rng); i > 0; --i) w.push_back(alphabet[pick(rng)]);
    return w;
  };
  std::vector<std::basic_string<Char>> out;
  for (size_t i = 0; i < pairs; ++i) {
    std::basic_string<Char> a = word();
    std::basic_string<Char> b = a.substr(0, rng() % (a.size() + 1)) + word();
    if (rng() % 4 == 0) {  // same letters, other case
      b = a;
      for (Char& c : b) {
        if (rng() % 2 == 0) c = static_cast<Char>(c >= 'a' && c <= 'z' ? c - 32 : c);
      }
    }
    out.push_back(a);
    out.push_back(b);
  }
  return out;
}

TEST_F(DefaultOrderAgainstRoot, Latin1TextAgreesInSign) {
  const auto words = RandomPairs(101, kLatin1Alphabet, 3000);
  int disagreements = 0;
  for (size_t i = 0; i + 1 < words.size(); i += 2) {
    const std::string& a = words[i];
    const std::string& b = words[i + 1];
    std::u16string ua, ub;
    for (unsigned char c : a) ua.push_back(c);
    for (unsigned char c : b) ub.push_back(c);
    const int ours = Sign(KaStrCmp(1, 0, a.c_str(), 1, 0, b.c_str(), kDefault, -1, 1, nullptr));
    const int reference = Reference(ua, ub);
    if (ours != reference && ++disagreements <= 10) {
      ADD_FAILURE() << "'" << a << "' vs '" << b << "': ours " << ours << ", reference "
                    << reference;
    }
  }
  EXPECT_EQ(0, disagreements);
}

TEST_F(DefaultOrderAgainstRoot, UnicodeTextAgreesInSign) {
  const auto words = RandomPairs(202, kUnicodeAlphabet, 3000);
  int disagreements = 0;
  for (size_t i = 0; i + 1 < words.size(); i += 2) {
    const std::u16string& a = words[i];
    const std::u16string& b = words[i + 1];
    const int ours = Sign(KaStrCmp(253, 0, a.c_str(), 253, 0, b.c_str(), kDefault, -1, 1, nullptr));
    const int reference = Reference(a, b);
    if (ours != reference && ++disagreements <= 10) {
      std::string ua, ub;
      icu::UnicodeString(a.data(), static_cast<int32_t>(a.size())).toUTF8String(ua);
      icu::UnicodeString(b.data(), static_cast<int32_t>(b.size())).toUTF8String(ub);
      ADD_FAILURE() << "'" << ua << "' vs '" << ub << "': ours " << ours << ", reference "
                    << reference;
    }
  }
  EXPECT_EQ(0, disagreements);
}

// The differences named at the top, each with the answer this order gives.
TEST_F(DefaultOrderAgainstRoot, DeliberateDifferences) {
  const std::u16string sharpS = u"stra\u00dfe", ss = u"strasse";
  EXPECT_EQ(0, Reference(sharpS, ss));
  EXPECT_NE(0, KaStrCmp(253, 0, sharpS.c_str(), 253, 0, ss.c_str(), kDefault, -1, 1, nullptr))
      << "equal letters, different lengths";
  const std::u16string capitalBe = u"\u0411a", smallBe = u"\u0431b";
  EXPECT_EQ(-1, Reference(capitalBe, smallBe));
  EXPECT_EQ(1, Sign(KaStrCmp(253, 0, capitalBe.c_str(), 253, 0, smallBe.c_str(), kDefault, -1, 1,
                             nullptr)))
      << "the Cyrillic capital decides at the first level";
}

}  // namespace
