// Collation orders against an independent reference: words of six European
// languages, with digits, blanks and punctuation, must sort by their orders at
// primary level (case and diacritics ignored) exactly as the reference
// collator's root order at primary strength sorts them.
#include <gtest/gtest.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kai18n/codeset.h"

namespace {

using Orders = std::vector<unsigned short>;

// Primary weight of an order: a letter keeps its base letter and extension,
// every other order counts whole.
unsigned short Primary(unsigned short order) {
  return KaClassOfOrder(order) == KaOrderClass::kLetter ? order & 0x407F : order;
}

// The primary weights of a text in `set`, expansions included.
Orders PrimaryKey(const KaCodeSet& set, const std::vector<unsigned short>& units) {
  Orders key;
  for (unsigned short unit : units) {
    const KaUnicodeProps p = set.GetUnicodeProps(unit, 0);
    key.push_back(Primary(p.order));
    for (unsigned i = 0; i < p.expansion.count; ++i) key.push_back(Primary(p.expansion.chars[i]));
  }
  return key;
}

int Sign(int v) { return (v > 0) - (v < 0); }

struct Word {
  std::string utf8;
  icu::UnicodeString text;
  Orders key;
};

class PrimaryCollation : public ::testing::Test {
 protected:
  void SetUp() override {
    UErrorCode status = U_ZERO_ERROR;
    collator_.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    collator_->setStrength(icu::Collator::PRIMARY);

    std::ifstream in(KA_TEST_DATA_DIR "/latin_words.txt");
    ASSERT_TRUE(in) << "word list missing";
    const KaCodeSet& unicode = *KaCodeSet::Get(253);
    for (std::string line; std::getline(in, line);) {
      Word w{line, icu::UnicodeString::fromUTF8(line), {}};
      std::vector<unsigned short> units(w.text.getBuffer(), w.text.getBuffer() + w.text.length());
      w.key = PrimaryKey(unicode, units);
      words_.push_back(std::move(w));
    }
  }

  int Reference(const Word& a, const Word& b) const {
    UErrorCode status = U_ZERO_ERROR;
    return Sign(collator_->compare(a.text, b.text, status));
  }
  static int Ours(const Word& a, const Word& b) {
    return Sign(std::lexicographical_compare(a.key.begin(), a.key.end(), b.key.begin(), b.key.end())
                    ? -1
                    : (a.key == b.key ? 0 : 1));
  }

  std::unique_ptr<icu::Collator> collator_;
  std::vector<Word> words_;
};

TEST_F(PrimaryCollation, SortsLikeTheReferenceRootOrder) {
  ASSERT_GE(words_.size(), 2000u);
  std::vector<const Word*> sorted;
  for (const Word& w : words_) sorted.push_back(&w);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [this](const Word* a, const Word* b) { return Reference(*a, *b) < 0; });
  int mismatches = 0;
  for (size_t i = 1; i < sorted.size() && mismatches < 20; ++i) {
    const Word& a = *sorted[i - 1];
    const Word& b = *sorted[i];
    if (Ours(a, b) != Reference(a, b)) {
      ADD_FAILURE() << "\"" << a.utf8 << "\" vs \"" << b.utf8 << "\": reference " << Reference(a, b)
                    << ", orders " << Ours(a, b);
      ++mismatches;
    }
  }
  // Neighbours alone would miss an order that is consistent only locally.
  std::mt19937 rng(4711);
  std::uniform_int_distribution<size_t> pick(0, words_.size() - 1);
  for (int i = 0; i < 20000 && mismatches < 20; ++i) {
    const Word& a = words_[pick(rng)];
    const Word& b = words_[pick(rng)];
    if (Ours(a, b) != Reference(a, b)) {
      ADD_FAILURE() << "\"" << a.utf8 << "\" vs \"" << b.utf8 << "\": reference " << Reference(a, b)
                    << ", orders " << Ours(a, b);
      ++mismatches;
    }
  }
}

TEST_F(PrimaryCollation, EightBitTextSortsAsItsUnicodeForm) {
  // Words that Windows-1252 can hold give the same orders in it as in Unicode.
  const KaCodeSet& cs1 = *KaCodeSet::Get(1);
  int checked = 0;
  for (const Word& w : words_) {
    std::vector<unsigned short> bytes;
    bool representable = true;
    for (int i = 0; i < w.text.length(); ++i) {
      const unsigned short b = cs1.FromUnicode(w.text[i]);
      representable = representable && (b != '?' || w.text[i] == u'?');
      bytes.push_back(b);
    }
    if (!representable) continue;
    ++checked;
    EXPECT_EQ(w.key, PrimaryKey(cs1, bytes)) << w.utf8;
  }
  EXPECT_GT(checked, 1000);
}

}  // namespace
