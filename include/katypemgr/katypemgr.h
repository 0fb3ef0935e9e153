// The type manager library: its whole public API in one include.
#ifndef KATYPEMGR_KATYPEMGR_H_
#define KATYPEMGR_KATYPEMGR_H_

#include "kabase/kabase.h"
#include "kai18n/kai18n.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kamodule.h"
#include "katypemgr/kaorder.h"
#include "katypemgr/kaprimtext.h"
#include "katypemgr/kaprocess.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypcmp.h"
#include "katypemgr/katypes.h"
#include "katypemgr/katypevl.h"
#include "katypemgr/katyphash.h"

#endif  // KATYPEMGR_KATYPEMGR_H_
