// Uses each service of the installed libraries once; exits non-zero on a
// wrong answer.
#include <katypemgr/katypemgr.h>

#include <cstdio>

int main() {
  const int value = 0x01020304;
  unsigned char stored[4];
  if (LongStore(stored, &value, 2, 1) != 4 || stored[0] != 1 || stored[3] != 4) return 1;
  if (CheckKaVersionNumber(12, 0, 0, 0, 0, KA_VERSION_SAME_RELEASE) != KA_VERSION_COMPATIBLE) {
    return 2;
  }
  DefaultConfig().SetInt("debug", "stringOverflow", 1);
  if (DefaultConfig().GetInt("DEBUG", "stringoverflow", 0) != 1) return 3;
  MemFile file(stored, sizeof stored);
  if (file.Seek(0, 4) == nullptr || file.Seek(1, 4) != nullptr) return 4;
  bdate date{};
  if (bksgetdate(&date) != 0 || date.year < 2000) return 5;
  const KaCodeSet* cs1 = KaCodeSet::Get(1);
  if (cs1 == nullptr || cs1->GetOrder('A') != 0x400C ||
      KaLanguageContext::GetDefaultCmpOp() != 16) {
    return 6;
  }
  KaString text(
      "stra\xDF"
      "e");
  text.ToUpper();
  if (text.Len() != 7 || text.Find(KaString("SS")) != 4) return 7;
  std::puts("consumer: ok");
  return 0;
}
