// Taking a letter order apart; private to the library.
#ifndef KATYPEMGR_SRC_STRING_ORDER_FIELDS_H_
#define KATYPEMGR_SRC_STRING_ORDER_FIELDS_H_

#include "kai18n/order.h"

namespace ka::detail {

// The four fields of a letter order. Answers -2002, `fields` untouched, for an
// order with bit 15 set; otherwise 0 and the fields, without checking that the
// order is a letter's.
int SplitLetterOrder(unsigned short order, KaLetterFields& fields);

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_STRING_ORDER_FIELDS_H_
