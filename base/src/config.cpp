// KaConfig: an in-memory section/key store and its text format.
#include "kabase/config.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

#include "kabase/memory.h"

namespace {

constexpr std::string_view kBlanks = " \t\r\v\f";

std::string_view Trim(std::string_view s) {
  const size_t first = s.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  const size_t last = s.find_last_not_of(kBlanks);
  return s.substr(first, last - first + 1);
}

unsigned char Lower(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c; }

int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const unsigned char l = Lower(static_cast<unsigned char>(c));
  if (l >= 'a' && l <= 'f') return l - 'a' + 10;
  return -1;
}

// Parses an int in decimal or with a 0x prefix in hexadecimal. No locale, no
// octal (a leading zero is decimal, as a person writing a config expects).
std::optional<int> ParseInt(std::string_view text) {
  std::string_view s = Trim(text);
  bool negative = false;
  if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
    negative = s[0] == '-';
    s.remove_prefix(1);
  }
  int base = 10;
  if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
    base = 16;
    s.remove_prefix(2);
  }
  if (s.empty()) return std::nullopt;
  long long magnitude = 0;
  for (char c : s) {
    const int d = DigitValue(c);
    if (d < 0 || d >= base) return std::nullopt;
    magnitude = magnitude * base + d;
    if (magnitude > static_cast<long long>(INT_MAX) + 1) return std::nullopt;
  }
  const long long value = negative ? -magnitude : magnitude;
  if (value > INT_MAX || value < INT_MIN) return std::nullopt;
  return static_cast<int>(value);
}

void Report(std::vector<std::string>* problems, std::string_view origin, unsigned int line,
            std::string_view what) {
  if (problems == nullptr) {
    std::fprintf(stderr, "katypemgr configuration: %.*s:%u: %.*s\n",
                 static_cast<int>(origin.size()), origin.data(), line,
                 static_cast<int>(what.size()), what.data());
    return;
  }
  try {
    std::string message;
    message.append(origin).append(":").append(std::to_string(line)).append(": ").append(what);
    problems->push_back(std::move(message));
  } catch (const std::bad_alloc&) {
    KaCallMemoryHandler(origin.size() + what.size());
  }
}

// Largest configuration file read. Far above any real configuration; it keeps
// a wrong path (a log, a core file) from filling memory.
constexpr size_t kMaxFileSize = size_t{1} << 20;

// Reads the whole content of a regular file of at most kMaxFileSize bytes.
// Answers null, or why the file was refused. The descriptor is opened without
// blocking and checked itself (not the path before opening it), so a FIFO
// without a writer or a device can neither stall the first DefaultConfig() nor
// be swapped in between a check and the open.
const char* ReadWholeFile(const char* path, std::string& content) {
  if (path == nullptr) return "cannot be read";
  const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return "cannot be read";
  const char* problem = nullptr;
  struct stat info;
  if (::fstat(fd, &info) != 0) {
    problem = "cannot be read";
  } else if (!S_ISREG(info.st_mode)) {
    problem = "is not a regular file";
  } else if (info.st_size < 0 || static_cast<uint64_t>(info.st_size) > kMaxFileSize) {
    problem = "is larger than 1 MiB";
  }
  // The size may change while reading (or be 0 for generated files): the
  // limit holds for what is read, not for what fstat said.
  char chunk[4096];
  try {
    if (problem == nullptr) content.reserve(static_cast<size_t>(info.st_size));
    while (problem == nullptr) {
      const ssize_t n = ::read(fd, chunk, sizeof chunk);
      if (n == 0) break;
      if (n < 0) {
        if (errno != EINTR) problem = "cannot be read";
      } else if (content.size() + static_cast<size_t>(n) > kMaxFileSize) {
        problem = "is larger than 1 MiB";
      } else {
        content.append(chunk, static_cast<size_t>(n));
      }
    }
  } catch (const std::bad_alloc&) {
    KaCallMemoryHandler(content.size() + sizeof chunk);
    problem = "out of memory";
  }
  ::close(fd);
  return problem;
}

// One line of configuration text, classified.
struct Line {
  enum Kind { kBlank, kSection, kKey, kMalformed } kind = kBlank;
  std::string_view name;   // section or key
  std::string_view value;  // key lines
  const char* problem = nullptr;
};

Line ClassifyLine(std::string_view raw) {
  Line line;
  if (raw.find('\0') != std::string_view::npos) {
    line.kind = Line::kMalformed;
    line.problem = "line holds a NUL byte";
    return line;
  }
  const std::string_view s = Trim(raw);
  if (s.empty() || s[0] == ';' || s[0] == '#') return line;
  if (s[0] == '[') {
    const size_t close = s.find(']');
    line.name = close == std::string_view::npos ? std::string_view{} : Trim(s.substr(1, close - 1));
    if (close == std::string_view::npos || !Trim(s.substr(close + 1)).empty() ||
        !KaConfig::IsValidName(line.name)) {
      line.kind = Line::kMalformed;
      line.problem = "expected a section header \"[name]\"";
      return line;
    }
    line.kind = Line::kSection;
    return line;
  }
  const size_t equals = s.find('=');
  if (equals == std::string_view::npos) {
    line.kind = Line::kMalformed;
    line.problem = "expected \"key = value\"";
    return line;
  }
  line.name = Trim(s.substr(0, equals));
  if (!KaConfig::IsValidName(line.name)) {
    line.kind = Line::kMalformed;
    line.problem = "key name must be letters, digits, '_', '.' or '-'";
    return line;
  }
  line.kind = Line::kKey;
  line.value = Trim(s.substr(equals + 1));
  return line;
}

}  // namespace

bool KaConfig::NoCaseLess::operator()(std::string_view a, std::string_view b) const {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    const unsigned char ca = Lower(static_cast<unsigned char>(a[i]));
    const unsigned char cb = Lower(static_cast<unsigned char>(b[i]));
    if (ca != cb) return ca < cb;
  }
  return a.size() < b.size();
}

bool KaConfig::IsValidName(std::string_view name) {
  if (name.empty()) return false;
  for (char c : name) {
    const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                    c == '_' || c == '.' || c == '-';
    if (!ok) return false;
  }
  return true;
}

int KaConfig::GetInt(std::string_view section, std::string_view key, int fallback) const {
  std::shared_lock lock(mutex_);
  const auto s = sections_.find(section);
  if (s == sections_.end()) return fallback;
  const auto k = s->second.find(key);
  if (k == s->second.end()) return fallback;
  return ParseInt(k->second).value_or(fallback);
}

std::optional<std::string> KaConfig::GetString(std::string_view section,
                                               std::string_view key) const {
  std::shared_lock lock(mutex_);
  const auto s = sections_.find(section);
  if (s == sections_.end()) return std::nullopt;
  const auto k = s->second.find(key);
  if (k == s->second.end()) return std::nullopt;
  try {
    return k->second;
  } catch (const std::bad_alloc&) {
    KaCallMemoryHandler(k->second.size());
    return std::nullopt;
  }
}

bool KaConfig::SetLocked(std::string_view section, std::string_view key, std::string_view value) {
  if ((!section.empty() && !IsValidName(section)) || !IsValidName(key)) return false;
  try {
    Section& keys = sections_.try_emplace(std::string(section)).first->second;
    keys.insert_or_assign(std::string(key), std::string(value));
    return true;
  } catch (const std::bad_alloc&) {
    KaCallMemoryHandler(section.size() + key.size() + value.size());
    return false;
  }
}

bool KaConfig::Set(std::string_view section, std::string_view key, std::string_view value) {
  std::unique_lock lock(mutex_);
  return SetLocked(section, key, value);
}

bool KaConfig::SetInt(std::string_view section, std::string_view key, int value) {
  char text[16];
  std::snprintf(text, sizeof text, "%d", value);
  return Set(section, key, text);
}

bool KaConfig::Remove(std::string_view section, std::string_view key) {
  std::unique_lock lock(mutex_);
  const auto s = sections_.find(section);
  if (s == sections_.end()) return false;
  const auto k = s->second.find(key);
  if (k == s->second.end()) return false;
  s->second.erase(k);
  return true;
}

void KaConfig::Clear() {
  std::unique_lock lock(mutex_);
  sections_.clear();
}

KaConfig::ParseResult KaConfig::Parse(std::string_view text, std::string_view origin,
                                      std::vector<std::string>* problems) {
  ParseResult result;
  std::unique_lock lock(mutex_);
  std::string_view section;
  unsigned int number = 0;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view raw = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    ++number;
    const Line line = ClassifyLine(raw);
    switch (line.kind) {
      case Line::kBlank:
        break;
      case Line::kSection:
        section = line.name;
        break;
      case Line::kKey:
        if (SetLocked(section, line.name, line.value)) {
          ++result.accepted;
        } else {
          ++result.rejected;
          Report(problems, origin, number, "out of memory");
        }
        break;
      case Line::kMalformed:
        ++result.rejected;
        Report(problems, origin, number, line.problem);
        break;
    }
  }
  return result;
}

KaConfig::ParseResult KaConfig::LoadFile(const char* path, std::vector<std::string>* problems) {
  const std::string_view name = path != nullptr ? path : "(null)";
  std::string content;
  if (const char* problem = ReadWholeFile(path, content)) {
    Report(problems, name, 0, problem);
    return ParseResult{0, 1};
  }
  return Parse(content, name, problems);
}

KaConfig::ParseResult KaConfig::LoadFromEnvironment(std::vector<std::string>* problems) {
  const char* path = std::getenv("KA_CONFIG");
  if (path == nullptr || *path == '\0') return {};
  return LoadFile(path, problems);
}

KaConfig& DefaultConfig() {
  static KaConfig& config = []() -> KaConfig& {
    // Never destroyed: libraries may read it from their own static destructors.
    static KaConfig* const instance = new KaConfig;
    instance->LoadFromEnvironment();
    return *instance;
  }();
  return config;
}
