// The mark of what the base services library exports. The library is built with
// hidden visibility: only declarations carrying KABASE_API are reachable from
// outside it, so its exported symbols are exactly what its public headers
// declare. Helpers, tables and standard-library instantiations stay inside.
#ifndef KABASE_EXPORT_H_
#define KABASE_EXPORT_H_

#define KABASE_API __attribute__((visibility("default")))

#endif  // KABASE_EXPORT_H_
