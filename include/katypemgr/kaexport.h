// The mark of what the type manager library exports. The library is built with
// hidden visibility: only declarations carrying KATYPEMGR_API are reachable from
// outside it, so its exported symbols are exactly what its public headers
// declare. Helpers, tables and standard-library instantiations stay inside.
#ifndef KATYPEMGR_KAEXPORT_H_
#define KATYPEMGR_KAEXPORT_H_

#define KATYPEMGR_API __attribute__((visibility("default")))

// A private member of an exported class that only the library's own sources
// call: it stays inside, whether the compiler emits it out of line or not.
#define KATYPEMGR_LOCAL __attribute__((visibility("hidden")))

#endif  // KATYPEMGR_KAEXPORT_H_
