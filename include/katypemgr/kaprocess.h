// Process-wide values of the type manager that value families read: the text
// printed for a null value, the "0" text that resets values, and the options
// word other modules of the engine keep here. They sit below the families so
// that no family needs the descriptor table or the facade.
#ifndef KATYPEMGR_KAPROCESS_H_
#define KATYPEMGR_KAPROCESS_H_

class KaString;

namespace ka {

// Initially "{NULL}". Set it at start-up; it is not guarded.
KaString& NullPrintString();
// "0": scanned into values of types that have no other way to be reset.
const KaString& ZeroString();

}  // namespace ka

// The options word (initially 0), read and written by other modules; this
// library does not interpret it.
int& ___KaTypeMgrOptions();

#endif  // KATYPEMGR_KAPROCESS_H_
