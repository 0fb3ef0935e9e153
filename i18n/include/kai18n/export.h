// The mark of what the internationalisation library exports. The library is built with
// hidden visibility: only declarations carrying KAI18N_API are reachable from
// outside it, so its exported symbols are exactly what its public headers
// declare. Helpers, tables and standard-library instantiations stay inside.
#ifndef KAI18N_EXPORT_H_
#define KAI18N_EXPORT_H_

#define KAI18N_API __attribute__((visibility("default")))

#endif  // KAI18N_EXPORT_H_
