// The options word that other modules of the engine keep in the type
// manager. (The null print string is set through KaTypeMgr.)
#ifndef KATYPEMGR_KAPROCESS_H_
#define KATYPEMGR_KAPROCESS_H_

#include "katypemgr/kaexport.h"

// The options word (initially 0), read and written by other modules; this
// library does not interpret it.
KATYPEMGR_API int& ___KaTypeMgrOptions();

#endif  // KATYPEMGR_KAPROCESS_H_
