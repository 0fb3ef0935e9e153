// The process-wide values below the families.
#include "table/process_values.h"

#include "katypemgr/kaprocess.h"
#include "katypemgr/kastring.h"

// Built on first use and never destroyed: families may print from static
// destructors of their own.
KaString& ka::NullPrintString() {
  static KaString* const text = new KaString("{NULL}");
  return *text;
}

const KaString& ka::ZeroString() {
  static const KaString* const text = new KaString("0");
  return *text;
}

int& ___KaTypeMgrOptions() {
  static int options = 0;
  return options;
}
