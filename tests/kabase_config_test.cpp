// Tests of the configuration object: its text format, integer reading, the
// setters, and loading from a file or from the file named by KA_CONFIG.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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
  KaConfig::ParseResult Parse(const std::string& text) {
    return config_.Parse(text, "t.ini", &problems_);
  }
  // The process id keeps concurrent runs of the suite apart.
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

TEST_F(ConfigTest, ParsesSectionsKeysCommentsAndLineEndings) {
  EXPECT_EQ(Counts(7, 0), Of(Parse("; comment\ntop = unnamed\n\n  # indented\n[Alpha]\r\n"
                                   "Key = first\r\nkey=second\n  spaced  =  a b  \t\n"
                                   "[ beta ]\neq = x = y\nempty =\n[ALPHA]\nlast = no newline")));
  EXPECT_EQ(Problems{}, problems_);
  EXPECT_EQ("unnamed", config_.GetString("", "top")) << "keys before any header";
  EXPECT_EQ("second", config_.GetString("alpha", "KEY")) << "later replaces, case ignored";
  EXPECT_EQ("a b", config_.GetString("Alpha", "spaced")) << "outer blanks trimmed, inner kept";
  EXPECT_EQ("x = y", config_.GetString("beta", "eq")) << "value runs from the first '='";
  EXPECT_EQ("no newline", config_.GetString("alpha", "last")) << "reopened, no final newline";
  EXPECT_EQ("", config_.GetString("BETA", "empty")) << "an empty value is present";
}

// Each bad line sits in [s] between two good ones: the lines after it still
// count, numbering carries on, and a bad header leaves the section as it was.
TEST_F(ConfigTest, ReportsMalformedLinesWithOriginAndSkipsThem) {
  const std::string kBadLines[] = {
      "no equals sign",        "bad key! = 1",  "= 1",
      "\xC3\xA9t\xC3\xA9 = 1", "[unterminated", "[]",
      "[two words]",           "[s] trailing",  std::string("k = a\0b", 7)};
  for (const std::string& line : kBadLines) {
    SCOPED_TRACE(line);
    config_.Clear();
    problems_.clear();
    EXPECT_EQ(Counts(2, 1), Of(Parse("[s]\nbefore = 1\n" + line + "\nafter = 2\n")));
    EXPECT_THAT(problems_, ElementsAre(StartsWith("t.ini:3: ")));
    EXPECT_EQ(1, config_.GetInt("s", "before", 0));
    EXPECT_EQ(2, config_.GetInt("s", "after", 0));
  }
  testing::internal::CaptureStderr();
  EXPECT_EQ(Counts(1, 1), Of(config_.Parse("ok = 1\noops\n", "where.ini")));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("where.ini:2: ")) << "no list";
}

struct IntCase {
  const char* text;
  int expected;
};
constexpr IntCase kInts[] = {{" \t+12 \t", 12},       {"010", 10},
                             {"0XfF", 255},           {"-0x10", -16},
                             {"2147483647", INT_MAX}, {"-2147483648", INT_MIN},
                             {"-0x80000000", INT_MIN}};
// Just outside int (decimal and hex), past any accumulator, and junk.
constexpr const char* kNotInts[] = {
    "2147483648", "-2147483649", "0x80000000", "99999999999999999999999", "12abc", "0x1g", "",
    "0x",         "-",           "1 2"};

TEST_F(ConfigTest, GetIntReadsDecimalAndHexWithinIntRange) {
  constexpr int kFallback = -777;
  for (const auto& c : kInts) {
    ASSERT_TRUE(config_.Set("n", "k", c.text));
    EXPECT_EQ(c.expected, config_.GetInt("N", "K", kFallback)) << c.text;
  }
  for (const char* text : kNotInts) {
    ASSERT_TRUE(config_.Set("n", "k", text));
    EXPECT_EQ(kFallback, config_.GetInt("n", "k", kFallback)) << '"' << text << '"';
  }
  EXPECT_EQ(kFallback, config_.GetInt("k", kFallback)) << "only the unnamed section";
}

TEST_F(ConfigTest, SettersRemoveClearAndRefuseBadNames) {
  ASSERT_TRUE(config_.SetInt("Num", "v", INT_MIN));
  EXPECT_EQ("-2147483648", config_.GetString("num", "V"));
  EXPECT_TRUE(config_.Remove("NUM", "v"));
  EXPECT_EQ(std::nullopt, config_.GetString("num", "v"));
  ASSERT_TRUE(config_.Set("alpha", "alpha", "1"));
  config_.Clear();
  EXPECT_EQ(std::nullopt, config_.GetString("alpha", "alpha"));
  const std::pair<std::string, std::string> kBad[] = {{"s", ""},    {"a b", "k"},      {"s", "k=v"},
                                                      {"[s]", "k"}, {"s", "\xC3\xA9"}, {"s;", "k"}};
  for (const auto& [section, key] : kBad) EXPECT_FALSE(config_.Set(section, key, "1")) << key;
}

// Ends the process when a read still blocks (a FIFO without a writer) or runs
// on (a device) after 20 seconds: SIGALRM's default action fails the test
// instead of letting it hang the run.
struct Watchdog {
  Watchdog() { alarm(20); }
  ~Watchdog() { alarm(0); }
};

// A file of exactly `size` bytes: one key line, then comment lines.
std::string FileOfSize(size_t size) {
  std::string text = "big = 1\n";
  while (text.size() < size)
    text.append(std::min<size_t>(size - text.size(), 64), ';').back() = '\n';
  return text;
}

// A FIFO or a device would block forever or read until memory ran out; such a
// file, a missing one and one over 1 MiB are one rejected item that names the
// reason and stores nothing. A file of exactly 1 MiB is read.
TEST_F(ConfigTest, RefusesUnreadableFifosDevicesAndFilesOverOneMebibyte) {
  const std::string fifo = testing::TempDir() + std::to_string(getpid()) + "kabase_config.fifo";
  std::remove(fifo.c_str());
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  written_.push_back(fifo);
  constexpr size_t kMiB = size_t{1} << 20;
  const std::pair<std::string, const char*> kFiles[] = {
      {testing::TempDir() + "kabase_none/none.ini", "cannot be read"},
      {fifo, "is not a regular file"},
      {"/dev/zero", "is not a regular file"},
      {WriteFile("kabase_config_big.ini", FileOfSize(kMiB + 1)), "is larger than 1 MiB"},
      {WriteFile("kabase_config_limit.ini", FileOfSize(kMiB)), nullptr}};
  for (const auto& [path, reason] : kFiles) {
    SCOPED_TRACE(path);
    problems_.clear();
    config_.Clear();
    Watchdog watchdog;
    ASSERT_EQ(0, setenv("KA_CONFIG", path.c_str(), 1));
    const bool read = reason == nullptr;
    EXPECT_EQ(read ? Counts(1, 0) : Counts(0, 1), Of(config_.LoadFromEnvironment(&problems_)));
    EXPECT_EQ(read ? 1 : -1, config_.GetInt("big", -1));
    if (!read) {
      EXPECT_THAT(problems_, ElementsAre(path + ":0: " + reason));
    }
  }
  problems_.clear();
  EXPECT_EQ(Counts(0, 1), Of(config_.LoadFile(nullptr, &problems_)));
  EXPECT_THAT(problems_, ElementsAre("(null):0: cannot be read"));
}

// Reports name the file; CRLF lines count once; unset or empty reads nothing.
TEST_F(ConfigTest, LoadsTheFileNamedByTheEnvironment) {
  const std::string path =
      WriteFile("kabase_config_env.ini", "good = 1\r\nbad one\r\n[s]\r\n[oops\r\nalso = 0x10\r\n");
  ASSERT_EQ(0, setenv("KA_CONFIG", path.c_str(), 1));
  EXPECT_EQ(Counts(2, 2), Of(config_.LoadFromEnvironment(&problems_)));
  EXPECT_THAT(problems_, ElementsAre(StartsWith(path + ":2: "), StartsWith(path + ":4: ")));
  EXPECT_EQ(16, config_.GetInt("s", "also", 0));
  ASSERT_EQ(0, setenv("KA_CONFIG", "", 1));
  EXPECT_EQ(Counts(0, 0), Of(config_.LoadFromEnvironment(&problems_)));
  ASSERT_EQ(0, unsetenv("KA_CONFIG"));
  EXPECT_EQ(Counts(0, 0), Of(config_.LoadFromEnvironment(&problems_)));
}

// The only test here that touches the process-wide object, so its first use,
// which reads KA_CONFIG, happens below.
TEST_F(ConfigTest, DefaultConfigIsOneObjectFilledFromTheEnvironment) {
  const std::string path = WriteFile("kabase_config_default.ini", "[dflt]\nseen = 7\n");
  ASSERT_EQ(0, setenv("KA_CONFIG", path.c_str(), 1));
  EXPECT_EQ(&DefaultConfig(), &DefaultConfig());
  EXPECT_EQ(7, DefaultConfig().GetInt("DFLT", "seen", 0));
}

}  // namespace
