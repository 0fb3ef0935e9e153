// The internationalisation library: everything it offers, in one include.
#ifndef KAI18N_KAI18N_H_
#define KAI18N_KAI18N_H_

#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "kai18n/order.h"

#endif  // KAI18N_KAI18N_H_
