// Allocation failure, exhaustively: every operation that allocates is run
// again and again with its first, second, third ... allocation failing, until
// it runs through without a failure. At each step the memory handler must have
// been told, nothing may crash or leak, and a value that was being edited is
// either as it was or as a run without failures leaves it.
//
// How failures are injected. This program replaces every global operator new
// and delete (plain, array, nothrow, aligned), so the libraries' C++
// allocations fail on demand in every build. Their C allocations:
// - Release builds replace malloc, calloc and realloc here as well (glibc's
//   own entry points stay behind them), so every allocation is covered.
// - AddressSanitizer owns malloc and cannot share it. There, KaMalloc (through
//   which the libraries take C memory) is replaced here: it fails on demand
//   and otherwise forwards to the library's own. Not covered under the
//   sanitizer: the realloc with which an append grows a string in place, and
//   KaMalloc's own retry; the release run covers both.
// LeakSanitizer (in sanitizer builds) checks each case for leaks.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "katypemgr/katypemgr.h"

#if defined(__SANITIZE_ADDRESS__)
#define KA_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KA_TEST_ASAN 1
#endif
#endif
#ifdef KA_TEST_ASAN
#include <sanitizer/lsan_interface.h>
#endif

// --- The injector ------------------------------------------------------------------------

namespace {

// Plain data, usable before main and from inside malloc.
struct Injector {
  bool armed;       // only the operation under test is counted
  bool persistent;  // after the first failure, every later allocation fails too
  long failAt;      // the allocation (1-based) that fails; 0: none
  long seen;
  long fired;
};
constinit Injector g_inject{};

bool FailThisAllocation() {
  if (!g_inject.armed) return false;
  ++g_inject.seen;
  if (g_inject.seen == g_inject.failAt || (g_inject.persistent && g_inject.fired > 0)) {
    ++g_inject.fired;
    return true;
  }
  return false;
}

}  // namespace

#ifdef KA_TEST_ASAN
namespace {
void* RealMalloc(size_t n) { return std::malloc(n); }

using KaMallocFn = void* (*)(size_t);
// Looked up before main, never while an operation runs.
const KaMallocFn g_realKaMalloc = reinterpret_cast<KaMallocFn>(dlsym(RTLD_NEXT, "_Z8KaMallocm"));
}  // namespace

// Fails as the C allocator would; the retry after the handler goes to the
// library's own.
void* KaMalloc(size_t size) {
  if (FailThisAllocation() && KaCallMemoryHandler(size) == 0) return nullptr;
  return g_realKaMalloc(size);
}
#else
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* p, size_t size);

void* malloc(size_t size) noexcept {
  if (FailThisAllocation()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
  if (FailThisAllocation()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_calloc(count, size);
}
void* realloc(void* p, size_t size) noexcept {
  if (size != 0 && FailThisAllocation()) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_realloc(p, size);
}
}
namespace {
void* RealMalloc(size_t n) { return __libc_malloc(n); }
}  // namespace
#endif

namespace {
void* NewOrNull(size_t n) { return FailThisAllocation() ? nullptr : RealMalloc(n == 0 ? 1 : n); }
void* AlignedOrNull(size_t n, std::align_val_t a) {
  if (FailThisAllocation()) return nullptr;
  const auto align = static_cast<size_t>(a);
  return std::aligned_alloc(align, (n + align - 1) / align * align + (n == 0 ? align : 0));
}
// Out of line, so the compiler does not pair a free here with the new
// expression that made the block.
[[gnu::noinline]] void Release(void* p) { std::free(p); }
}  // namespace

void* operator new(size_t n) {
  if (void* p = NewOrNull(n)) return p;
  throw std::bad_alloc();
}
void* operator new[](size_t n) { return operator new(n); }
void* operator new(size_t n, const std::nothrow_t&) noexcept { return NewOrNull(n); }
void* operator new[](size_t n, const std::nothrow_t&) noexcept { return NewOrNull(n); }
void* operator new(size_t n, std::align_val_t a) {
  if (void* p = AlignedOrNull(n, a)) return p;
  throw std::bad_alloc();
}
void* operator new[](size_t n, std::align_val_t a) { return operator new(n, a); }
void* operator new(size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
  return AlignedOrNull(n, a);
}
void* operator new[](size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
  return AlignedOrNull(n, a);
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, size_t) noexcept { Release(p); }
void operator delete[](void* p, size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete(void* p, std::align_val_t) noexcept { Release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { Release(p); }
void operator delete(void* p, size_t, std::align_val_t) noexcept { Release(p); }
void operator delete[](void* p, size_t, std::align_val_t) noexcept { Release(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { Release(p); }

namespace {

// --- Describing values -------------------------------------------------------------------

std::string Hex(const void* p, size_t n) {
  std::string out;
  char byte[4];
  for (size_t i = 0; i < n; ++i) {
    std::snprintf(byte, sizeof byte, "%02x", static_cast<const unsigned char*>(p)[i]);
    out += byte;
  }
  return out;
}

std::string Describe(const KaString& s) {
  return "cs" + std::to_string(s.CodeSet()) + " lang" + std::to_string(s.Language()) + " [" +
         Hex(s.StrGet(), s.Size()) + "]";
}
std::string Describe(const KaIString& s) { return "[" + Hex(s.StrGet(), s.Len()) + "]"; }
std::string Describe(const KaCaseIString& s) { return "[" + Hex(s.StrGet(), s.Len()) + "]"; }

constexpr const char* kNothing = "nothing";

// --- One run of an operation ---------------------------------------------------------------

// What the value under test was before the operation and is after it.
struct Outcome {
  std::string before;
  std::string after;
};

// Runs `operation` with the injector armed.
template <typename F>
void Armed(F&& operation) {
  g_inject.armed = true;
  operation();
  g_inject.armed = false;
}

// An edit of `value` in place.
template <typename T, typename F>
Outcome Edit(T& value, F&& edit) {
  Outcome o{Describe(value), {}};
  Armed(edit);
  o.after = Describe(value);
  return o;
}

// A new value: before is what a failed make leaves (`empty`).
template <typename T, typename F>
Outcome Make(const T& empty, F&& make) {
  std::optional<T> made;
  Armed([&] { made.emplace(make()); });
  return {Describe(empty), Describe(*made)};
}

int g_handlerCalls = 0;
int CountingHandler(size_t) {
  ++g_handlerCalls;
  return 0;
}

struct AllocCase {
  std::string name;
  std::function<Outcome()> run;
  bool perKey = false;  // compare, hash, store, load: must not allocate at all
};

// The exhaustive loop of one case in one failure mode: the first fault found,
// or an empty text.
std::string FirstFault(const AllocCase& c, bool persistent) {
  SCOPED_TRACE(c.name + (persistent ? " (every allocation from N on fails)" : " (N-th fails)"));
  g_inject = Injector{false, persistent, 0, 0, 0};
  const Outcome clean = c.run();
  if (c.perKey && g_inject.seen != 0) return "allocates per key";
  constexpr long kLimit = 100000;
  for (long n = 1; n < kLimit; ++n) {
    g_inject = Injector{false, persistent, n, 0, 0};
    g_handlerCalls = 0;
    const Outcome o = c.run();
    if (g_inject.fired == 0) {
      return clean.after == o.after ? "" : "result differs from the first run: " + o.after;
    }
    const std::string at = "allocation " + std::to_string(n);
    if (g_handlerCalls == 0) return at + " failed unreported";
    if (o.after != o.before && o.after != clean.after) {
      return at + " failed: neither kept nor complete\n  before   " + o.before + "\n  after    " +
             o.after + "\n  expected " + clean.after;
    }
  }
  return "still failing after " + std::to_string(kLimit) + " allocations";
}

void Exhaust(const AllocCase& c, bool persistent) {
  const char* mode = persistent ? " (every allocation from N on fails)" : " (N-th fails)";
  EXPECT_EQ("", FirstFault(c, persistent)) << c.name << mode;
}

// --- The type manager's rows -----------------------------------------------------------------

class Mgr : public KaTypeMgr {
 public:
  using KaTypeMgr::ConvertFromKaStringOld;
  using KaTypeMgr::ConvertToKaStringOld;
};

constexpr unsigned kCount = 3;

// Describes `count` elements of row `id` at `values` through its bytes (for
// the primitive rows) or its texts (for the string rows); null is "nothing".
std::string DescribeArray(KaTypeMgr& m, signed char id, void* values, unsigned count) {
  if (values == nullptr) return kNothing;
  if (id == KaSTRING_T || id == KaISTRING_T || id == KaCASEISTRING_T) {
    std::string out;
    for (unsigned i = 0; i < count; ++i) {
      void* element = m.GetArrayElement(id, values, i, count);
      if (id == KaSTRING_T) out += Describe(*static_cast<KaString*>(element));
      if (id == KaISTRING_T) out += Describe(*static_cast<KaIString*>(element));
      if (id == KaCASEISTRING_T) out += Describe(*static_cast<KaCaseIString*>(element));
    }
    return out;
  }
  return Hex(values, m.MemLenGet(id, count));
}

std::string DescribeHolder(KaTypeMgr& m, KaTypeConvertData* h) {
  return h == nullptr ? kNothing : DescribeArray(m, KaSTRING_T, h->data, h->count);
}

// `count` elements of row `id` scanned from "5", "6", "7" ... (unarmed).
void* MakeValues(KaTypeMgr& m, signed char id, unsigned count) {
  void* values = m.Create(id, count);
  for (unsigned i = 0; i < count; ++i) {
    KaString text(static_cast<int>(5 + i));
    m.ScanFromKaString(id, m.GetArrayElement(id, values, i, count), text, nullptr, 1);
  }
  return values;
}

KaTypeConvertData* MakeTexts(KaTypeMgr& m, unsigned count) {
  auto* strings = static_cast<KaString*>(m.Create(KaSTRING_T, count));
  for (unsigned i = 0; i < count; ++i) strings[i] = KaString(static_cast<int>(5 + i));
  return KaTypeConvertData::Make(KaSTRING_T, count, strings, &m);
}

// Owns a value array for the length of one run.
struct Values {
  Values(Mgr& manager, signed char row) : m(manager), id(row), p(MakeValues(m, id, kCount)) {}
  ~Values() { m.Delete(id, p, kCount); }
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;
  std::string Describe() { return DescribeArray(m, id, p, kCount); }
  Mgr& m;
  signed char id;
  void* p;
};

Mgr& Manager() {
  static Mgr* const m = new Mgr;
  return *m;
}

using RowOperation = Outcome (*)(signed char id);

// One line per operation; every row of a family runs each.
struct RowOperationCase {
  const char* name;
  RowOperation run;
  bool perKey;
};

const RowOperationCase kRowOperations[] = {
    {"Create",
     [](signed char id) {
       Mgr& m = Manager();
       void* made = nullptr;
       Armed([&] { made = m.Create(id, kCount); });
       Outcome o{kNothing, made != nullptr ? "made" : kNothing};
       m.Delete(id, made, kCount);
       return o;
     },
     false},
    {"StoreLoad",
     [](signed char id) {
       Values v(Manager(), id);
       unsigned char stored[64] = {};
       Outcome o{v.Describe(), {}};
       Armed([&] {
         Manager().Store(id, stored, v.p, 2, kCount);
         Manager().Load(id, v.p, stored, 2, kCount);
       });
       o.after = v.Describe();
       return o;
     },
     true},
    {"CmpHash",
     [](signed char id) {
       Values a(Manager(), id), b(Manager(), id);
       int error = 0;
       unsigned hash = 0;
       int order = 0;
       Armed([&] {
         order = Manager().Cmp(id, a.p, b.p, 0, kCount, 8);
         hash = Manager().Hash(id, 0, a.p, kCount, 8, error);
       });
       return Outcome{"", std::to_string(order) + " " + std::to_string(hash)};
     },
     true},
    {"ConvertTo",
     [](signed char id) {
       Values v(Manager(), id);
       KaTypeConvertData* h = nullptr;
       Armed([&] { h = Manager().ConvertTo(id, v.p, kCount); });
       Outcome o{kNothing, DescribeHolder(Manager(), h)};
       delete h;
       return o;
     },
     false},
    {"ConvertFrom",
     [](signed char id) {
       Mgr& m = Manager();
       KaTypeConvertData* h = MakeTexts(m, kCount);
       void* made = nullptr;
       Armed([&] { made = m.ConvertFrom(id, h, kCount); });
       Outcome o{kNothing, DescribeArray(m, id, made, kCount)};
       m.Delete(id, made, kCount);
       delete h;
       return o;
     },
     false},
    {"ConvertToKaStringOld",
     [](signed char id) {
       Values v(Manager(), id);
       KaString* joined = nullptr;
       Armed([&] { joined = Manager().ConvertToKaStringOld(v.p, id, kCount); });
       Outcome o{kNothing, joined != nullptr ? Describe(*joined) : kNothing};
       Manager().Delete(KaSTRING_T, joined, 1);
       return o;
     },
     false},
    {"ConvertFromKaStringOld",
     [](signed char id) {
       Mgr& m = Manager();
       KaString text("5,6,7,");
       void* made = nullptr;
       Armed([&] { made = m.ConvertFromKaStringOld(&text, id, kCount); });
       Outcome o{kNothing, DescribeArray(m, id, made, kCount)};
       m.Delete(id, made, kCount);
       return o;
     },
     false},
    {"Print",
     [](signed char id) {
       Values v(Manager(), id);
       KaString out("old text");
       return Edit(out, [&] { Manager().PrintToKaString(id, out, v.p, nullptr, 1); });
     },
     false},
    {"PrintArray",
     [](signed char id) {
       Values v(Manager(), id);
       KaString out("old text");
       return Edit(out, [&] { Manager().PrintToKaString(id, out, v.p, nullptr, kCount); });
     },
     false},
    {"Scan",
     [](signed char id) {
       Values v(Manager(), id);
       KaString text("42");
       Outcome o{v.Describe(), {}};
       Armed([&] { Manager().ScanFromKaString(id, v.p, text, nullptr, 1); });
       o.after = v.Describe();
       return o;
     },
     false},
    {"SetNullValue",
     [](signed char id) {
       Values v(Manager(), id);
       Outcome o{v.Describe(), {}};
       Armed([&] { Manager().SetNullValue(id, v.p); });
       o.after = v.Describe();
       return o;
     },
     false},
    {"EvalAndBound",
     [](signed char id) {
       Values v(Manager(), id);
       KaIdxBounds bounds;
       unsigned short flags = kKaOpEqual;
       Armed([&] { Manager().EvalAndBound(id, nullptr, flags, v.p, 8, 1, &bounds, nullptr); });
       Outcome o{Hex(nullptr, 0) + "|",
                 Hex(bounds.lower, bounds.lower ? bounds.lowerLength : 0) + "|" +
                     Hex(bounds.upper, bounds.upper ? bounds.upperLength : 0)};
       std::free(bounds.lower);
       std::free(bounds.upper);
       return o;
     },
     false},
};

// The string rows' array life through the facade.
const RowOperationCase kClassRowOperations[] = {
    kRowOperations[0],  // Create
    {"CopySlot",
     [](signed char id) {
       Mgr& m = Manager();
       void* source = m.Create(id, kCount);
       if (id == KaSTRING_T) {
         for (unsigned i = 0; i < kCount; ++i) static_cast<KaString*>(source)[i] = "text";
       } else if (id == KaISTRING_T) {
         for (unsigned i = 0; i < kCount; ++i) static_cast<KaIString*>(source)[i] = "text";
       } else {
         for (unsigned i = 0; i < kCount; ++i) static_cast<KaCaseIString*>(source)[i] = "text";
       }
       void* target = m.Create(id, kCount);
       m.DestructorPtrGet(id)(target, kCount, 0);
       Armed([&] { m.CopyPtrGet(id)(target, source, kCount, 0); });
       Outcome o{"", DescribeArray(m, id, target, kCount)};
       // Each element is either a whole copy or empty.
       const std::string element = DescribeArray(m, id, source, 1);
       m.Delete(id, target, kCount);
       m.Delete(id, source, kCount);
       o.before = o.after;  // checked element by element below
       for (size_t at = 0; at < o.after.size();) {
         const size_t next = o.after.find(']', at) + 1;
         const std::string piece = o.after.substr(at, next - at);
         if (piece != element && piece.find("[]") == std::string::npos) o.before = "broken";
         at = next;
       }
       return o;
     },
     false},
    {"AssignmentSlot",
     [](signed char id) {
       Mgr& m = Manager();
       void* source = m.Create(id, kCount);
       void* target = m.Create(id, kCount);
       for (unsigned i = 0; i < kCount; ++i) {
         if (id == KaSTRING_T) {
           static_cast<KaString*>(source)[i] = "new";
           static_cast<KaString*>(target)[i] = "old";
         } else if (id == KaISTRING_T) {
           static_cast<KaIString*>(source)[i] = "new";
           static_cast<KaIString*>(target)[i] = "old";
         } else {
           static_cast<KaCaseIString*>(source)[i] = "new";
           static_cast<KaCaseIString*>(target)[i] = "old";
         }
       }
       const std::string oldOne = DescribeArray(m, id, target, 1);
       const std::string newOne = DescribeArray(m, id, source, 1);
       Armed([&] { m.AssignmentPtrGet(id)(target, source, kCount, 0); });
       Outcome o{"", DescribeArray(m, id, target, kCount)};
       m.Delete(id, target, kCount);
       m.Delete(id, source, kCount);
       // Each element keeps its old text or takes the whole new one.
       std::string check;
       for (size_t at = 0; at < o.after.size();) {
         const size_t next = o.after.find(']', at) + 1;
         const std::string piece = o.after.substr(at, next - at);
         check += piece == oldOne || piece == newOne ? "ok" : "broken";
         at = next;
       }
       o.before = check == "okokok" ? o.after : "broken";
       return o;
     },
     false},
    {"SetNullValue",
     [](signed char id) {
       Mgr& m = Manager();
       auto* value = static_cast<KaString*>(m.Create(id, 1));
       if (id == KaSTRING_T) *value = "text";
       Outcome o{DescribeArray(m, id, value, 1), {}};
       Armed([&] { m.SetNullValue(id, value); });
       o.after = DescribeArray(m, id, value, 1);
       m.Delete(id, value, 1);
       return o;
     },
     false},
};

constexpr signed char kPrimitiveRows[] = {Ka1B_T,  Ka2B_T,      Ka4B_T,  KaDOUBLE_T,   KaFLOAT_T,
                                          KaU2B_T, KaU4B_T,     KaINT_T, KaUNSIGNED_T, KaENUM_T,
                                          KaU1B_T, KaBLOCKID_T, Ka8B_T,  KaU8B_T};
constexpr signed char kStringRows[] = {KaSTRING_T, KaISTRING_T, KaCASEISTRING_T};

// --- The string classes' edits -----------------------------------------------------------------

const unsigned short* Wide(const char16_t* text) {
  return reinterpret_cast<const unsigned short*>(text);
}

// One line per edit. Arguments are built before the run is armed.
const AllocCase kStringCases[] = {
    {"KaString(const KaString&)",
     [] {
       KaString s("copied");
       return Make(KaString(s.CodeSet(), s.Language()), [&] { return KaString(s); });
     }},
    {"KaString(const char*)", [] { return Make(KaString(), [] { return KaString("text"); }); }},
    {"KaString(double)",
     [] {
       return Make(KaString(KaString::GetDefault8CodeSet(), KaString::GetDefaultLanguage()),
                   [] { return KaString(2.5); });
     }},
    {"operator=(const KaString&)",
     [] {
       KaString s("old"), t("assigned");
       return Edit(s, [&] { s = t; });
     }},
    {"operator=(const KaString&) wide",
     [] {
       KaString s("old"), t(Wide(u"\u20ac wide"));
       return Edit(s, [&] { s = t; });
     }},
    {"operator=(const char*)",
     [] {
       KaString s("old");
       return Edit(s, [&] { s = "assigned"; });
     }},
    {"operator=(const unsigned short*)",
     [] {
       KaString s("old");
       return Edit(s, [&] { s = Wide(u"wide"); });
     }},
    {"Append KaString",
     [] {
       KaString s("head"), t("tail");
       return Edit(s, [&] { s << t; });
     }},
    {"Append KaString to empty",
     [] {
       KaString s, t("tail");
       return Edit(s, [&] { s += t; });
     }},
    {"Append wide to narrow",
     [] {
       KaString s("head"), t(Wide(u"\u00e9t\u00e9"));
       return Edit(s, [&] { s << t; });
     }},
    {"Append narrow to wide",
     [] {
       KaString s(Wide(u"head")), t("t\xe9te");
       return Edit(s, [&] { s << t; });
     }},
    {"Append char*",
     [] {
       KaString s("head");
       return Edit(s, [&] { s << "tail"; });
     }},
    {"Append number",
     [] {
       KaString s("head");
       return Edit(s, [&] { s << 2.5; });
     }},
    {"Append itself",
     [] {
       KaString s("twice");
       return Edit(s, [&] { s << s; });
     }},
    {"operator+",
     [] {
       KaString a("left"), b("right");
       return Make(KaString(), [&] { return a + b; });
     }},
    {"Insert",
     [] {
       KaString s("head"), t("middle");
       return Edit(s, [&] { s.Insert(t, 2); });
     }},
    {"Insert wide",
     [] {
       KaString s("head"), t(Wide(u"\u00fcber"));
       return Edit(s, [&] { s.Insert(t, 2); });
     }},
    {"Replace",
     [] {
       KaString s("abcdef"), t("XY");
       return Edit(s, [&] { s.Replace(t, 2); });
     }},
    {"Replace past the end",
     [] {
       KaString s("abc"), t("xyz");
       return Edit(s, [&] { s.Replace(t, 2); });
     }},
    {"ReplaceAll",
     [] {
       KaString s("a-b-c-d"), from("-"), to("+=");
       return Edit(s, [&] { s.ReplaceAll(from, to); });
     }},
    {"ReplaceAll from other code sets",
     [] {
       KaString s("a-b-c-d"), from(Wide(u"-")), to(Wide(u"\u00e9\u00e8"));
       return Edit(s, [&] { s.ReplaceAll(from, to); });
     }},
    {"ReplaceAll units",
     [] {
       KaString s("a-b-c");
       return Edit(s, [&] { s.ReplaceAll('-', '+'); });
     }},
    {"ToUpper",
     [] {
       KaString s(
           "stra\xdf"
           "e");
       return Edit(s, [&] { s.ToUpper(); });
     }},
    {"ToLower wide",
     [] {
       KaString s(Wide(u"GR\u00dcN"));
       return Edit(s, [&] { s.ToLower(); });
     }},
    {"Copy",
     [] {
       KaString s("abcdef");
       return Make(KaString(s.CodeSet(), s.Language()), [&] { return s.Copy(1, 3); });
     }},
    {"Cut",
     [] {
       KaString s("abcdef");
       return Edit(s, [&] { s.Cut(1, 2); });
     }},
    {"Trim",
     [] {
       KaString s("  padded  ");
       return Edit(s, [&] { s.Trim(); });
     }},
    {"Fill",
     [] {
       KaString s("abc");
       return Edit(s, [&] { s.Fill(5, 'z'); });
     }},
    {"Expand wide",
     [] {
       KaString s(Wide(u"ab"));
       return Edit(s, [&] { s.Expand(6, static_cast<unsigned short>(u'\u00e9')); });
     }},
    {"SetCodeSet",
     [] {
       KaString s("caf\xe9");
       return Edit(s, [&] { s.SetCodeSet(253); });
     }},
    {"MapToCodeSet",
     [] {
       KaString s("caf\xe9");
       return Edit(s, [&] { s.MapToCodeSet(2); });
     }},
    {"CopyMapped",
     [] {
       KaString s("old"), t(Wide(u"wide \u00e9"));
       return Edit(s, [&] { s.CopyMapped(t, 1); });
     }},
};

// The same edits for both case-insensitive strings.
template <typename T>
std::vector<AllocCase> FoldedCases(const std::string& type) {
  return {
      {type + " copy",
       [] {
         T s("copied");
         return Make(T(), [&] { return T(s); });
       }},
      {type + " assignment",
       [] {
         T s("old"), t("assigned");
         return Edit(s, [&] { s = t; });
       }},
      {type + " Assign(const char*)",
       [] {
         T s("old");
         return Edit(s, [&] { s = "assigned"; });
       }},
      {type + " +=",
       [] {
         T s("head"), t("tail");
         return Edit(s, [&] { s += t; });
       }},
      {type + " +",
       [] {
         T a("left"), b("right");
         return Make(T(), [&] { return a + b; });
       }},
      {type + " Insert",
       [] {
         T s("head"), t("middle");
         return Edit(s, [&] { s.Insert(t, 2); });
       }},
      {type + " Replace",
       [] {
         T s("abc"), t("xyz");
         return Edit(s, [&] { s.Replace(t, 2); });
       }},
      {type + " Cut",
       [] {
         T s("abcdef");
         return Edit(s, [&] { s.Cut(1, 2); });
       }},
      {type + " Expand",
       [] {
         T s("ab");
         return Edit(s, [&] { s.Expand(6, 'x'); });
       }},
      {type + " Fill",
       [] {
         T s("ab");
         return Edit(s, [&] { s.Fill(4, 'y'); });
       }},
      {type + " ToUpper",
       [] {
         T s("MiXeD");
         return Edit(s, [&] { s.ToUpper(); });
       }},
      {type + " Copy",
       [] {
         T s("abcdef");
         return Make(T(), [&] { return s.Copy(1, 3); });
       }},
  };
}

// --- The tests ---------------------------------------------------------------------------------

class AllocationFailure : public testing::Test {
 protected:
  void SetUp() override { previous_ = KaSetMemoryHandler(CountingHandler); }
  void TearDown() override {
    KaSetMemoryHandler(previous_);
#ifdef KA_TEST_ASAN
    EXPECT_EQ(0, __lsan_do_recoverable_leak_check()) << "leaks: see the report above";
#endif
  }
  static void ExhaustAll(const std::vector<AllocCase>& cases) {
    for (const AllocCase& c : cases) {
      Exhaust(c, false);
      Exhaust(c, true);
    }
  }
  static std::vector<AllocCase> RowCases(const signed char* rows, size_t n,
                                         const RowOperationCase* ops, size_t m) {
    std::vector<AllocCase> cases;
    for (size_t r = 0; r < n; ++r) {
      for (size_t o = 0; o < m; ++o) {
        const signed char id = rows[r];
        const RowOperation run = ops[o].run;
        cases.push_back({"row " + std::to_string(id) + " " + ops[o].name,
                         [id, run] { return run(id); }, ops[o].perKey});
      }
    }
    return cases;
  }

  KaMemoryHandler previous_ = nullptr;
};

// The injector works: a failed allocation reaches the library as one.
TEST_F(AllocationFailure, InjectorFailsTheChosenAllocation) {
  Mgr& m = Manager();
  g_inject = Injector{false, false, 2, 0, 0};
  void* first = nullptr;
  void* second = nullptr;
  Armed([&] {
    first = m.Create(Ka4B_T, 1);
    second = m.Create(Ka4B_T, 1);
  });
  EXPECT_NE(nullptr, first);
  EXPECT_EQ(nullptr, second);
  EXPECT_EQ(1, g_handlerCalls);
  m.Delete(Ka4B_T, first, 1);
  g_handlerCalls = 0;
}

TEST_F(AllocationFailure, PrimitiveRows) {
  ExhaustAll(RowCases(kPrimitiveRows, std::size(kPrimitiveRows), kRowOperations,
                      std::size(kRowOperations)));
}

TEST_F(AllocationFailure, StringRows) {
  ExhaustAll(RowCases(kStringRows, std::size(kStringRows), kClassRowOperations,
                      std::size(kClassRowOperations)));
}

TEST_F(AllocationFailure, KaStringEdits) {
  ExhaustAll(std::vector<AllocCase>(std::begin(kStringCases), std::end(kStringCases)));
}

TEST_F(AllocationFailure, CaseInsensitiveStringEdits) {
  ExhaustAll(FoldedCases<KaIString>("KaIString"));
  ExhaustAll(FoldedCases<KaCaseIString>("KaCaseIString"));
}

}  // namespace
