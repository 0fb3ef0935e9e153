// The configuration object: sections of keys with text values, read as
// integers by the libraries of the engine.
//
// A host fills the default object (DefaultConfig()) through Set/SetInt, and
// the first call of DefaultConfig() also reads the file named by the
// environment variable KA_CONFIG, when set. The file has lines
//     [section]
//     key = value
//     ; comment        # comment
// Keys before the first [section] header belong to the unnamed section, which
// is the one the lookups without a section read. Section and key names are
// compared without regard to ASCII case; a later definition of a key replaces
// an earlier one. A line that is none of the above is reported with its file
// name and line number and skipped; the rest of the file still counts. Only a
// regular file of at most 1 MiB is read: anything else (a FIFO, a device, a
// directory, a larger file) is reported the same way and read as empty.
//
// The object is safe to read from several threads while another sets values.
#ifndef KABASE_CONFIG_H_
#define KABASE_CONFIG_H_

#include <map>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

#include "kabase/export.h"

class KABASE_API KaConfig {
 public:
  // What one Parse or LoadFile call did.
  struct ParseResult {
    unsigned int accepted = 0;  // key lines stored
    unsigned int rejected = 0;  // lines reported and skipped (or 1 for an unreadable file)
  };

  KaConfig() = default;
  KaConfig(const KaConfig&) = delete;
  KaConfig& operator=(const KaConfig&) = delete;

  // The value of `key` as an integer: decimal or 0x-hexadecimal, with an
  // optional sign and surrounding blanks, within the range of int. Answers
  // `fallback` when the key is absent or its value is not such a number.
  int GetInt(std::string_view section, std::string_view key, int fallback) const;
  int GetInt(std::string_view key, int fallback) const { return GetInt({}, key, fallback); }

  // The text value of `key`, if present.
  std::optional<std::string> GetString(std::string_view section, std::string_view key) const;

  // Sets a key; an empty section is the unnamed one. False (and nothing
  // stored) when a name is not a valid name or memory is short.
  bool Set(std::string_view section, std::string_view key, std::string_view value);
  bool SetInt(std::string_view section, std::string_view key, int value);
  // Removes a key; false when it was not there.
  bool Remove(std::string_view section, std::string_view key);
  void Clear();

  // Reads configuration text. `origin` names it in reports. Each rejected line
  // is described in `problems` when given, else on standard error.
  ParseResult Parse(std::string_view text, std::string_view origin,
                    std::vector<std::string>* problems = nullptr);
  // Reads a regular file of at most 1 MiB without blocking on it; a file that
  // cannot be read, is not a regular file or is larger is one rejected item
  // and nothing of it is stored.
  ParseResult LoadFile(const char* path, std::vector<std::string>* problems = nullptr);
  // Reads the file named by KA_CONFIG; nothing when the variable is unset or empty.
  ParseResult LoadFromEnvironment(std::vector<std::string>* problems = nullptr);

  // Valid names: letters, digits and "_.-", at least one character.
  static bool IsValidName(std::string_view name);

 private:
  struct NoCaseLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
  };
  using Section = std::map<std::string, std::string, NoCaseLess>;

  bool SetLocked(std::string_view section, std::string_view key, std::string_view value);

  mutable std::shared_mutex mutex_;
  std::map<std::string, Section, NoCaseLess> sections_;
};

// The process-wide configuration object. Created, and filled from KA_CONFIG,
// on first use; lives for the whole process.
KABASE_API KaConfig& DefaultConfig();

#endif  // KABASE_CONFIG_H_
