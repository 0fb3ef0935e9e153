// Small helpers shared by the string tests: reading a KaString back as bytes
// or units, and building a Unicode string from a literal.
#ifndef KATYPEMGR_TESTS_KASTRING_TEST_UTIL_H_
#define KATYPEMGR_TESTS_KASTRING_TEST_UTIL_H_

#include <string>
#include <vector>

#include "katypemgr/kastring.h"

namespace ka::test {

using Units = std::vector<unsigned short>;

inline std::string Text(const KaString& s) { return s.StrGet() == nullptr ? "" : s.StrGet(); }

inline Units UnitsOf(const KaString& s) {
  Units u;
  for (unsigned short i = 0; i < s.Len(); ++i) u.push_back(s.UnitAt(i));
  return u;
}

// A code set 253 string of the literal's UTF-16 units.
inline KaString Wide(const std::u16string& text) {
  std::vector<unsigned short> units(text.begin(), text.end());
  units.push_back(0);
  return KaString(units.data());
}

}  // namespace ka::test

#endif  // KATYPEMGR_TESTS_KASTRING_TEST_UTIL_H_
