// The mark of what the type manager library exports. The library is built with
// hidden visibility: only declarations carrying KATYPEMGR_API are reachable from
// outside it, so its exported symbols are exactly what its public headers
// declare. Helpers, tables and standard-library instantiations stay inside.
#ifndef KATYPEMGR_KAEXPORT_H_
#define KATYPEMGR_KAEXPORT_H_

#define KATYPEMGR_API __attribute__((visibility("default")))

#endif  // KATYPEMGR_KAEXPORT_H_
