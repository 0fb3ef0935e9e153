// The two descriptor tables, for the facade. Private to the library: value
// families never see the tables.
#ifndef KATYPEMGR_SRC_KATABLES_H_
#define KATYPEMGR_SRC_KATABLES_H_

#include "katypemgr/katypes.h"

namespace ka::detail {

// 47 row pointers each, indexed by folded type id. The old table holds the
// older string row at 11 and the current rows everywhere else, so folding,
// name lookup and capability questions never index past it. The primitive
// rows' stored-form slots are completed before either table is first handed
// out.
KaTypeDescriptor* const* CurrentTable();
KaTypeDescriptor* const* OldTable();

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_KATABLES_H_
