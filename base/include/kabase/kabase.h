// The base services library: everything it offers, in one include.
#ifndef KABASE_KABASE_H_
#define KABASE_KABASE_H_

#include "kabase/assert.h"
#include "kabase/clock.h"
#include "kabase/codec.h"
#include "kabase/config.h"
#include "kabase/memfile.h"
#include "kabase/memory.h"
#include "kabase/version.h"

#endif  // KABASE_KABASE_H_
