// The process-wide values that families read: the text printed for a null
// value and the "0" text that resets values. They sit below the families so
// that no family needs the descriptor table or the facade. Private to the
// library; a host sets the null print string through KaTypeMgr.
#ifndef KATYPEMGR_SRC_TABLE_PROCESS_VALUES_H_
#define KATYPEMGR_SRC_TABLE_PROCESS_VALUES_H_

class KaString;

namespace ka {

// Initially "{NULL}". Set it at start-up; it is not guarded.
KaString& NullPrintString();
// "0": scanned into values of types that have no other way to be reset.
const KaString& ZeroString();

}  // namespace ka

#endif  // KATYPEMGR_SRC_TABLE_PROCESS_VALUES_H_
