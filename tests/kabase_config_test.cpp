// Tests of the configuration object: its text format, integer reading, the
// setters, and loading from a file or from the file named by KA_CONFIG.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kabase/config.h"

namespace {

using Problems = std::vector<std::string>;
using Counts = std::pair<unsigned, unsigned>;  // accepted, rejected
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

Counts Of(const KaConfig::ParseResult& r) { return {r.accepted, r.rejected}; }

class ConfigTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* v = std::getenv("KA_CONFIG")) saved_env_ = v;
  }
  void TearDown() override {
    (void)(saved_env_ ? setenv("KA_CONFIG", saved_env_->c_str(), 1) : unsetenv("KA_CONFIG"));
    for (const std::string& path : written_) std::remove(path.c_str());
  }
  KaConfig::ParseResult Parse(std::string_view text) {
    return config_.Parse(text, "t.ini", &problems_);
  }
  // A file under the scratch directory holding `text`; the process id keeps
  // concurrent runs of the suite apart.
  std::string WriteFile(const std::string& name, const std::string& text) {
    const std::string path = testing::TempDir() + std::to_string(getpid()) + name;
    std::ofstream(path, std::ios::binary) << text;
    written_.push_back(path);
    return path;
  }

  KaConfig config_;
  Problems problems_;
  std::optional<std::string> saved_env_;
  std::vector<std::string> written_;
};

constexpr std::string_view kGoodText =
    "; leading comment\n"
    "top = unnamed\n\n   # indented comment\n"
    "[Alpha]\r\nKey = first\r\nkey=second\n"
    "  spaced   =   a b c  \t\n"
    "empty =\ndotted.name-1_x = v\n"
    "[ beta ]\neq = x = y\n"
    "[ALPHA]\nlate = back in alpha\n"
    "last = no newline at end";

struct LookupCase {
  const char* section;
  const char* key;
  std::optional<std::string> value;
  const char* why;
};
const LookupCase kLookupCases[] = {
    {"", "top", "unnamed", "keys before any header go to the unnamed section"},
    {"alpha", "KEY", "second", "later key replaces earlier, names ignore case"},
    {"Alpha", "spaced", "a b c", "blanks around name and value trimmed, inner kept"},
    {"alpha", "empty", "", "empty value is present"},
    {"alpha", "dotted.name-1_x", "v", "all name characters"},
    {"beta", "eq", "x = y", "value runs from the first '='; header name trimmed"},
    {"alpha", "late", "back in alpha", "reopened section in another case"},
    {"alpha", "last", "no newline at end", "final line without newline"},
    {"", "key", std::nullopt, "unnamed section holds only its own keys"},
};

TEST_F(ConfigTest, ParsesSectionsKeysCommentsAndLineEndings) {
  EXPECT_EQ(Counts(9, 0), Of(Parse(kGoodText)));
  EXPECT_EQ(Problems{}, problems_);
  for (const auto& c : kLookupCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.value, config_.GetString(c.section, c.key));
  }
}

struct BadLineCase {
  std::string line;
  const char* why;
};
const BadLineCase kBadLines[] = {
    {"no equals sign", "missing '='"},
    {"bad key! = 1", "key with a character outside the name set"},
    {"= 1", "empty key"},
    {"\xC3\xA9t\xC3\xA9 = 1", "key with bytes >= 0x80"},
    {"[unterminated", "header without ']'"},
    {"[]", "empty section name"},
    {"[two words]", "section name with a blank"},
    {"[s] trailing", "text after ']'"},
    {std::string("k = a\0b", 7), "NUL byte in the value"},
};

// Each bad line sits between two good ones, so the rows also check that the
// lines after a rejected one still count and that numbering carries on.
TEST_F(ConfigTest, RejectsMalformedLinesAndKeepsTheRest) {
  for (const auto& c : kBadLines) {
    SCOPED_TRACE(c.why);
    config_.Clear();
    problems_.clear();
    EXPECT_EQ(Counts(2, 1), Of(Parse("[s]\nbefore = 1\n" + c.line + "\nafter = 2\n")));
    EXPECT_THAT(problems_, ElementsAre(StartsWith("t.ini:3: ")));
    EXPECT_EQ(1, config_.GetInt("s", "before", 0));
    EXPECT_EQ(2, config_.GetInt("s", "after", 0));
  }
}

TEST_F(ConfigTest, MalformedHeaderLeavesTheCurrentSection) {
  Parse("unnamed = 0\n[bad name]\na = 1\n[first]\n[second\nb = 2\n[x] y\nc = 3\n");
  EXPECT_EQ((Problems{"t.ini:2: expected a section header \"[name]\"",
                      "t.ini:5: expected a section header \"[name]\"",
                      "t.ini:7: expected a section header \"[name]\""}),
            problems_);
  EXPECT_EQ("1", config_.GetString("", "a"));
  EXPECT_EQ("2", config_.GetString("first", "b"));
  EXPECT_EQ("3", config_.GetString("first", "c"));
  EXPECT_EQ(std::nullopt, config_.GetString("second", "b"));
}

TEST_F(ConfigTest, ReportsOnStandardErrorWithoutAProblemList) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(Counts(1, 1), Of(config_.Parse("ok = 1\noops\n", "where.ini")));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("where.ini:2: "));
}

struct IntCase {
  const char* text;
  int expected;
  const char* why;
};
constexpr IntCase kIntCases[] = {
    {"42", 42, "decimal"},
    {"+42", 42, "explicit plus"},
    {" \t12 \t", 12, "blanks around"},
    {"010", 10, "leading zero is decimal, not octal"},
    {"0x1F", 31, "hex"},
    {"0XfF", 255, "hex prefix and digits in either case"},
    {"-0x10", -16, "negative hex"},
    {"2147483647", INT_MAX, "INT_MAX"},
    {"-2147483648", INT_MIN, "INT_MIN"},
    {"-0x80000000", INT_MIN, "INT_MIN in hex"},
};
// Just outside int (in decimal and hex), past any accumulator, and junk.
constexpr const char* kNotInts[] = {
    "2147483648", "-2147483649", "0x80000000", "99999999999999999999999",
    "12abc",      "1a",          "0x1g",       "",
    "  ",         "0x",          "-",          "--1",
    "0x-1",       "1 2",         "1.5",        "0 x1"};

TEST_F(ConfigTest, GetIntReadsDecimalAndHexWithinIntRange) {
  constexpr int kFallback = -777;
  for (const auto& c : kIntCases) {
    SCOPED_TRACE(c.why);
    ASSERT_TRUE(config_.Set("n", "k", c.text));
    EXPECT_EQ(c.expected, config_.GetInt("n", "k", kFallback));
  }
  for (const char* text : kNotInts) {
    SCOPED_TRACE(std::string("\"") + text + "\"");
    ASSERT_TRUE(config_.Set("n", "k", text));
    EXPECT_EQ(kFallback, config_.GetInt("n", "k", kFallback));
  }
  EXPECT_EQ(kFallback, config_.GetInt("n", "absent", kFallback));
  EXPECT_EQ(kFallback, config_.GetInt("absent", "k", kFallback));
  // Without a section only the unnamed one is read.
  EXPECT_EQ(kFallback, config_.GetInt("k", kFallback));
  ASSERT_TRUE(config_.SetInt("", "k", 5));
  EXPECT_EQ(5, config_.GetInt("K", kFallback));
}

TEST_F(ConfigTest, SettersRoundTripReplaceRemoveAndClear) {
  for (int v : {0, -1, INT_MAX, INT_MIN}) {
    ASSERT_TRUE(config_.SetInt("Num", "v", v));
    EXPECT_EQ(v, config_.GetInt("NUM", "V", v == 0 ? 1 : 0));
  }
  EXPECT_EQ("-2147483648", config_.GetString("num", "v"));
  ASSERT_TRUE(config_.Set("num", "V", "replaced"));
  EXPECT_EQ("replaced", config_.GetString("Num", "v"));
  EXPECT_TRUE(config_.Remove("NUM", "v"));
  EXPECT_FALSE(config_.Remove("num", "v"));
  EXPECT_FALSE(config_.Remove("nowhere", "v"));
  EXPECT_EQ(std::nullopt, config_.GetString("num", "v"));
  ASSERT_TRUE(config_.Set("", "a", "1"));
  config_.Clear();
  EXPECT_EQ(std::nullopt, config_.GetString("", "a"));
  EXPECT_TRUE(config_.Set("", "a", "2"));
  EXPECT_EQ("2", config_.GetString("", "a"));
}

// Enough names in mixed case that lookups depend on a consistent ordering.
TEST_F(ConfigTest, NamesIgnoreCaseAmongManyKeys) {
  const std::string kNames[] = {"alpha", "Bravo", "charlie", "Delta", "echo", "FOXTROT", "b", "A"};
  for (const std::string& n : kNames) ASSERT_TRUE(config_.Set(n, n, n));
  for (const std::string& n : kNames) {
    std::string flipped = n;
    for (char& ch : flipped) ch = static_cast<char>(ch ^ 0x20);  // letters only here
    EXPECT_EQ(n, config_.GetString(flipped, flipped)) << flipped;
  }
}

TEST_F(ConfigTest, RefusesInvalidNames) {
  const std::pair<std::string, std::string> kBad[] = {
      {"s", ""},         {"a b", "k"},   {"s", "k=v"}, {"[s]", "k"},
      {"s", "\xC3\xA9"}, {"s", "tab\t"}, {"s;", "k"},  {std::string("s\0", 2), "k"},
  };
  for (const auto& [section, key] : kBad) {
    SCOPED_TRACE(section + "/" + key);
    EXPECT_FALSE(config_.Set(section, key, "1"));
    EXPECT_FALSE(config_.SetInt(section, key, 1));
    EXPECT_EQ(std::nullopt, config_.GetString(section, key));
  }
}

TEST_F(ConfigTest, UnreadableFileIsOneRejectedItem) {
  const std::string missing = testing::TempDir() + "kabase_config_missing/none.ini";
  const std::string directory = testing::TempDir();
  for (const char* path : {missing.c_str(), directory.c_str(), static_cast<const char*>(nullptr)}) {
    SCOPED_TRACE(path != nullptr ? path : "null");
    problems_.clear();
    EXPECT_EQ(Counts(0, 1), Of(config_.LoadFile(path, &problems_)));
    EXPECT_THAT(problems_, ElementsAre(HasSubstr("cannot be read")));
  }
}

// LoadFile by way of KA_CONFIG: reports name the file, CRLF lines count once.
TEST_F(ConfigTest, LoadsTheFileNamedByTheEnvironment) {
  const std::string path = WriteFile("kabase_config_env.ini",
                                     "good = 1\r\nbad one\r\n[s]\r\n[oops\r\nalso = 0x10\r\n=\r\n");
  ASSERT_EQ(0, setenv("KA_CONFIG", path.c_str(), 1));
  EXPECT_EQ(Counts(2, 3), Of(config_.LoadFromEnvironment(&problems_)));
  EXPECT_THAT(problems_, ElementsAre(StartsWith(path + ":2: "), StartsWith(path + ":4: "),
                                     StartsWith(path + ":6: ")));
  EXPECT_EQ(1, config_.GetInt("good", 0));
  EXPECT_EQ(16, config_.GetInt("s", "also", 0));
}

TEST_F(ConfigTest, NoEnvironmentFileMeansNothingToRead) {
  for (bool set_empty : {false, true}) {
    SCOPED_TRACE(set_empty ? "empty" : "unset");
    ASSERT_EQ(0, set_empty ? setenv("KA_CONFIG", "", 1) : unsetenv("KA_CONFIG"));
    EXPECT_EQ(Counts(0, 0), Of(config_.LoadFromEnvironment(&problems_)));
    EXPECT_TRUE(problems_.empty());
  }
}

// The only test here that touches the process-wide object, so its first use,
// which reads KA_CONFIG, happens below.
TEST_F(ConfigTest, DefaultConfigIsOneObjectFilledFromTheEnvironment) {
  const std::string path = WriteFile("kabase_config_default.ini", "[dflt]\nseen = 7\n");
  ASSERT_EQ(0, setenv("KA_CONFIG", path.c_str(), 1));
  KaConfig& first = DefaultConfig();
  EXPECT_EQ(&first, &DefaultConfig());
  EXPECT_EQ(7, first.GetInt("DFLT", "seen", 0));
}

}  // namespace
