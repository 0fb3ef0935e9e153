// The type manager library: its whole public API in one include.
#ifndef KATYPEMGR_KATYPEMGR_H_
#define KATYPEMGR_KATYPEMGR_H_

#include "kabase/kabase.h"
#include "kai18n/kai18n.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kaorder.h"
#include "katypemgr/kastring.h"

#endif  // KATYPEMGR_KATYPEMGR_H_
