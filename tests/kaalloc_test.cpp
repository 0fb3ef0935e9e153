// Allocation failure, exhaustively: each operation runs again and again with
// its first, second, third ... allocation failing (or every allocation from
// that one on) until it runs through without a failure. Each time the memory
// handler must have been told, nothing may crash or leak, and the value being
// edited or made is either as it was or as a run without failures leaves it.
//
// The global operator new and delete are replaced here, so C++ allocations
// fail on demand in every build. C memory: release builds replace malloc,
// calloc and realloc too (glibc's own entry points behind them). The
// sanitizer owns malloc, so there KaMalloc, which the libraries take C memory
// through, is replaced instead; the realloc that grows a string in place and
// KaMalloc's own retry are then covered by the release run only. The aligned
// forms are left alone: the libraries make no over-aligned object.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
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
  if (g_inject.seen != g_inject.failAt && !(g_inject.persistent && g_inject.fired > 0)) {
    return false;
  }
  ++g_inject.fired;
  return true;
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
static bool CFails() {
  if (!FailThisAllocation()) return false;
  errno = ENOMEM;
  return true;
}
void* malloc(size_t n) noexcept { return CFails() ? nullptr : __libc_malloc(n); }
void* calloc(size_t k, size_t n) noexcept { return CFails() ? nullptr : __libc_calloc(k, n); }
void* realloc(void* p, size_t n) noexcept {
  return n != 0 && CFails() ? nullptr : __libc_realloc(p, n);
}
}
static void* RealMalloc(size_t n) { return __libc_malloc(n); }
#endif

namespace {
void* NewOrNull(size_t n) { return FailThisAllocation() ? nullptr : RealMalloc(n == 0 ? 1 : n); }
void* OrThrow(void* p) { return p != nullptr ? p : throw std::bad_alloc(); }
// Out of line, so the compiler does not pair a free here with the new
// expression that made the block.
[[gnu::noinline]] void Release(void* p) { std::free(p); }
using NoThrow = std::nothrow_t;
}  // namespace

void* operator new(size_t n) { return OrThrow(NewOrNull(n)); }
void* operator new[](size_t n) { return OrThrow(NewOrNull(n)); }
void* operator new(size_t n, const NoThrow&) noexcept { return NewOrNull(n); }
void* operator new[](size_t n, const NoThrow&) noexcept { return NewOrNull(n); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, size_t) noexcept { Release(p); }
void operator delete[](void* p, size_t) noexcept { Release(p); }
void operator delete(void* p, const NoThrow&) noexcept { Release(p); }
void operator delete[](void* p, const NoThrow&) noexcept { Release(p); }

namespace {

// --- The harness -------------------------------------------------------------------------

// A value as text, one item per element of an array.
using Shown = std::vector<std::string>;
constexpr const char* kNothing = "nothing";

std::string Hex(const void* p, size_t n) {
  std::string out = "[";
  char byte[4];
  for (size_t i = 0; i < n; ++i) {
    std::snprintf(byte, sizeof byte, "%02x", static_cast<const unsigned char*>(p)[i]);
    out += byte;
  }
  return out + "]";
}
std::string Show(const KaString& s) {
  return "cs" + std::to_string(s.CodeSet()) + " lang" + std::to_string(s.Language()) + " " +
         Hex(s.StrGet(), s.Size());
}
std::string Show(const KaIString& s) { return Hex(s.StrGet(), s.Len()); }
std::string Show(const KaCaseIString& s) { return Hex(s.StrGet(), s.Len()); }
template <typename T>
Shown Snap(const T& value) {
  return {Show(value)};
}

// What a make that failed leaves: empty, in the code set it was to have.
template <typename T>
T Blank(const T& s) {
  if constexpr (std::is_same_v<T, KaString>) return KaString(s.CodeSet(), s.Language());
  return T();
}

struct Outcome {
  Shown before;
  Shown after;
};

enum class Rule {
  kAllOrNothing,  // the whole value kept or complete
  kEachElement,   // each element kept or complete: an array slot runs element by element
  kNoAllocation,  // compare, hash, store, load run per key: not one allocation
};

template <typename F>
void Armed(F&& operation) {
  g_inject.armed = true;
  operation();
  g_inject.armed = false;
}

template <typename T, typename F>
Outcome Edit(T& value, F&& edit) {
  Outcome o{Snap(value), {}};
  Armed(edit);
  o.after = Snap(value);
  return o;
}

int g_handlerCalls = 0;
int CountingHandler(size_t) {
  ++g_handlerCalls;
  return 0;
}

bool KeptOrComplete(const Outcome& o, const Shown& complete, Rule rule) {
  if (rule != Rule::kEachElement) return o.after == o.before || o.after == complete;
  if (o.after.size() != complete.size() || o.before.size() != complete.size()) return false;
  for (size_t i = 0; i < complete.size(); ++i) {
    if (o.after[i] != o.before[i] && o.after[i] != complete[i]) return false;
  }
  return true;
}

// The exhaustive loop of one case in one failure mode: the first fault found,
// or an empty text.
std::string FirstFault(const std::function<Outcome()>& run, Rule rule, bool persistent) {
  using testing::PrintToString;
  g_inject = Injector{false, persistent, 0, 0, 0};
  const Shown complete = run().after;
  if (rule == Rule::kNoAllocation && g_inject.seen != 0) return "allocates per key";
  for (long n = 1; n < 100000; ++n) {
    g_inject = Injector{false, persistent, n, 0, 0};
    g_handlerCalls = 0;
    const Outcome o = run();
    if (g_inject.fired == 0) {
      return o.after == complete ? "" : "differs from the first run: " + PrintToString(o.after);
    }
    const std::string at = "allocation " + std::to_string(n) + " failed";
    if (g_handlerCalls == 0) return at + " unreported";
    if (!KeptOrComplete(o, complete, rule)) {
      return at + ": neither kept nor complete\n  before   " + PrintToString(o.before) +
             "\n  after    " + PrintToString(o.after) + "\n  complete " + PrintToString(complete);
    }
  }
  return "still failing after 100000 allocations";
}

void Exhaust(const std::string& name, const std::function<Outcome()>& run,
             Rule rule = Rule::kAllOrNothing) {
  EXPECT_EQ("", FirstFault(run, rule, false)) << name << " (N-th fails)";
  EXPECT_EQ("", FirstFault(run, rule, true)) << name << " (every allocation from N on fails)";
}

// --- The type manager's rows -------------------------------------------------------------

class Mgr : public KaTypeMgr {
 public:
  using KaTypeMgr::ConvertFromKaStringOld;
  using KaTypeMgr::ConvertToKaStringOld;
};
Mgr& M() {
  static Mgr* const m = new Mgr;
  return *m;
}

constexpr unsigned kCount = 3;

bool IsStringRow(signed char id) {
  return id == KaSTRING_T || id == KaISTRING_T || id == KaCASEISTRING_T;
}

// Calls `f` on each element of a string row's array, typed.
template <typename F>
void EachString(signed char id, void* values, unsigned count, F&& f) {
  for (unsigned i = 0; i < count; ++i) {
    void* e = M().GetArrayElement(id, values, i, count);
    if (id == KaSTRING_T) f(*static_cast<KaString*>(e));
    if (id == KaISTRING_T) f(*static_cast<KaIString*>(e));
    if (id == KaCASEISTRING_T) f(*static_cast<KaCaseIString*>(e));
  }
}

// The elements' bytes (primitive rows) or texts (string rows); null is nothing.
Shown Elements(signed char id, void* values, unsigned count) {
  if (values == nullptr) return {kNothing};
  if (!IsStringRow(id)) return {Hex(values, M().MemLenGet(id, count))};
  Shown out;
  EachString(id, values, count, [&](const auto& s) { out.push_back(Show(s)); });
  return out;
}

// kCount elements of row `id` holding `first`, `first` + 1 ...: scanned numbers,
// or in a string row that many letters, so a larger number needs more room.
void* Numbers(signed char id, int first) {
  void* values = M().Create(id, kCount);
  int n = first;
  EachString(id, values, kCount, [&](auto& s) { s = std::string(n++, 'x').c_str(); });
  for (unsigned i = 0; i < kCount && !IsStringRow(id); ++i) {
    KaString text(first + static_cast<int>(i));
    M().ScanFromKaString(id, M().GetArrayElement(id, values, i, kCount), text, nullptr, 1);
  }
  return values;
}

// Owns an array of row `id` for one run.
struct Values {
  explicit Values(signed char row, void* values = nullptr, unsigned n = kCount)
      : id(row), count(n), p(values) {}
  ~Values() { M().Delete(id, p, count); }
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;
  signed char id;
  unsigned count;
  void* p;
};
Shown Snap(const Values& v) { return Elements(v.id, v.p, v.count); }

// A new array of `count` elements of row `id`, or nothing.
template <typename F>
Outcome Made(signed char id, unsigned count, F&& make) {
  Values made(id, nullptr, count);
  Armed([&] { made.p = make(); });
  return {{kNothing}, Snap(made)};
}

Outcome Printed(Values& v, unsigned count) {
  KaString out("old text");
  return Edit(out, [&] { M().PrintToKaString(v.id, out, v.p, nullptr, count); });
}

enum Family { kPrimitive = 1, kStrings = 2, kBoth = 3 };

// An operation on `v`, the numbers 5, 6, 7 in the row; each row of its
// family runs it.
struct RowOperation {
  const char* name;
  Outcome (*run)(Values& v);
  Family rows = kPrimitive;
  Rule rule = Rule::kAllOrNothing;
};

const RowOperation kRowOperations[] = {
    {"Create",
     [](Values& v) { return Made(v.id, kCount, [&] { return M().Create(v.id, kCount); }); }, kBoth},
    {"StoreLoadCmpHash",
     [](Values& v) {
       Values b(v.id, Numbers(v.id, 5));
       unsigned char stored[64] = {};
       int error = 0, order = 0;
       unsigned hash = 0;
       Outcome o = Edit(v, [&] {
         M().Store(v.id, stored, v.p, 2, kCount);
         M().Load(v.id, v.p, stored, 2, kCount);
         order = M().Cmp(v.id, v.p, b.p, 0, kCount, 8);
         hash = M().Hash(v.id, 0, v.p, kCount, 8, error);
       });
       o.after.insert(o.after.end(), {std::to_string(order), std::to_string(hash)});
       return o;
     },
     kPrimitive, Rule::kNoAllocation},
    {"Hash",
     [](Values& v) {
       int error = 0;
       unsigned hash = 0;
       Outcome o = Edit(v, [&] { hash = M().Hash(v.id, 0, v.p, kCount, 8, error); });
       o.after.insert(o.after.end(), {std::to_string(hash), std::to_string(error)});
       return o;
     },
     kStrings, Rule::kNoAllocation},
    {"ConvertTo",
     [](Values& v) {
       std::unique_ptr<KaTypeConvertData> h;
       Armed([&] { h.reset(M().ConvertTo(v.id, v.p, kCount)); });
       return Outcome{{kNothing}, h ? Elements(KaSTRING_T, h->data, h->count) : Shown{kNothing}};
     }},
    {"ConvertFrom",
     [](Values& v) {
       std::unique_ptr<KaTypeConvertData> h(
           KaTypeConvertData::Make(KaSTRING_T, kCount, Numbers(KaSTRING_T, 5), &M()));
       return Made(v.id, kCount, [&] { return M().ConvertFrom(v.id, h.get(), kCount); });
     }},
    {"ConvertToKaStringOld",
     [](Values& v) {
       return Made(KaSTRING_T, 1, [&] { return M().ConvertToKaStringOld(v.p, v.id, kCount); });
     }},
    {"ConvertFromKaStringOld",  // the caller's text is consumed only with values made
     [](Values& v) {
       KaString text("5,6,7,");
       Outcome o =
           Made(v.id, kCount, [&] { return M().ConvertFromKaStringOld(&text, v.id, kCount); });
       o.before.push_back(Show(KaString("5,6,7,")));
       o.after.push_back(Show(text));
       return o;
     }},
    {"Print", [](Values& v) { return Printed(v, 1); }},
    {"PrintArray", [](Values& v) { return Printed(v, kCount); }},
    {"Scan",
     [](Values& v) {
       KaString text("42");
       return Edit(v, [&] { M().ScanFromKaString(v.id, v.p, text, nullptr, 1); });
     }},
    {"SetNullValue", [](Values& v) { return Edit(v, [&] { M().SetNullValue(v.id, v.p); }); },
     kBoth},
    {"EvalAndBound",  // both bounds or neither
     [](Values& v) {
       KaIdxBounds b;
       unsigned short flags = kKaOpEqual;
       Armed([&] { M().EvalAndBound(v.id, nullptr, flags, v.p, 8, 1, &b, nullptr); });
       const Shown made = {Hex(b.lower, b.lower ? b.lowerLength : 0),
                           Hex(b.upper, b.upper ? b.upperLength : 0)};
       std::free(b.lower);
       std::free(b.upper);
       return Outcome{{"[]", "[]"}, made};
     }},
    {"CopySlot",  // into destroyed elements; a failed copy is empty
     [](Values& source) {
       Values target(source.id, Numbers(source.id, 0));
       M().DestructorPtrGet(source.id)(target.p, kCount, 0);
       Armed([&] { M().CopyPtrGet(source.id)(target.p, source.p, kCount, 0); });
       Outcome o{{}, Snap(target)};
       EachString(source.id, source.p, kCount,
                  [&](const auto& s) { o.before.push_back(Show(Blank(s))); });
       return o;
     },
     kStrings, Rule::kEachElement},
    {"AssignmentSlot",
     [](Values& target) {
       Values source(target.id, Numbers(target.id, 100));
       return Edit(target, [&] { M().AssignmentPtrGet(target.id)(target.p, source.p, kCount, 0); });
     },
     kStrings, Rule::kEachElement},
};

constexpr signed char kRows[] = {Ka1B_T,      Ka2B_T,         Ka4B_T,    Ka8B_T,      KaU1B_T,
                                 KaU2B_T,     KaU4B_T,        KaU8B_T,   KaINT_T,     KaUNSIGNED_T,
                                 KaENUM_T,    KaDOUBLE_T,     KaFLOAT_T, KaBLOCKID_T, KaSTRING_T,
                                 KaISTRING_T, KaCASEISTRING_T};

// --- The string classes --------------------------------------------------------------------

const unsigned short* Wide(const char16_t* text) {
  return reinterpret_cast<const unsigned short*>(text);
}

// Narrow text, or UTF-16 for a wide KaString.
struct Literal {
  Literal(const char* text) : narrow(text) {}
  Literal(const char16_t* text) : wide(text) {}
  template <typename T>
  T Make() const {
    if constexpr (std::is_same_v<T, KaString>) {
      if (wide != nullptr) return KaString(Wide(wide));
    }
    return T(narrow);
  }
  const char* narrow = "";
  const char16_t* wide = nullptr;
};

// An edit of `value` with `argument` in place, or a new value made from them
// (blank when the make fails). Both are built before the run is armed.
template <typename T>
struct StringCase {
  const char* name;
  Literal value, argument;
  void (*edit)(T& s, const T& t);
  T (*make)(const T& s, const T& t) = nullptr;

  Outcome Run() const {
    T s = value.Make<T>();
    const T t = argument.Make<T>();
    if (make == nullptr) return Edit(s, [&] { edit(s, t); });
    std::optional<T> made;
    Armed([&] { made.emplace(make(s, t)); });
    return {{Show(Blank(s))}, {Show(*made)}};
  }
};

// Longer than the spare room of a new KaString's buffer, so an edit that adds
// it must grow the buffer.
constexpr const char* kLong = "a text longer than the spare room";

const StringCase<KaString> kStringCases[] = {
    {"KaString(const KaString&)", "copied", "", nullptr,
     [](auto& s, auto&) { return KaString(s); }},
    {"KaString(const char*)", "", "", nullptr, [](auto&, auto&) { return KaString("text"); }},
    {"KaString(double)", "", "", nullptr, [](auto&, auto&) { return KaString(2.5); }},
    {"operator+", "left", "right", nullptr, [](auto& s, auto& t) { return s + t; }},
    {"Copy", "abcdef", "", nullptr, [](auto& s, auto&) { return s.Copy(1, 3); }},
    {"operator=(const KaString&)", "old", kLong, [](auto& s, auto& t) { s = t; }},
    {"operator=(const KaString&) wide", "old", u"\u20ac wide", [](auto& s, auto& t) { s = t; }},
    {"operator=(const char*)", "old", "", [](auto& s, auto&) { s = kLong; }},
    {"operator=(const unsigned short*)", "old", "", [](auto& s, auto&) { s = Wide(u"wide"); }},
    {"Append KaString", "head", kLong, [](auto& s, auto& t) { s << t; }},
    {"Append KaString to empty", "", "tail", [](auto& s, auto& t) { s += t; }},
    {"Append wide to narrow", "head", u"\u00e9t\u00e9", [](auto& s, auto& t) { s << t; }},
    {"Append narrow to wide", u"head", "t\xe9te", [](auto& s, auto& t) { s << t; }},
    {"Append char*", "head", "", [](auto& s, auto&) { s << kLong; }},
    {"Append number", "a head of twenty-two c", "", [](auto& s, auto&) { s << 2.5; }},
    {"Append itself", "twice, and twice", "", [](auto& s, auto&) { s << s; }},
    {"Insert", "head", kLong, [](auto& s, auto& t) { s.Insert(t, 2); }},
    {"Insert wide", "head", u"\u00fcber", [](auto& s, auto& t) { s.Insert(t, 2); }},
    {"Replace", "abcdef", kLong, [](auto& s, auto& t) { s.Replace(t, 2); }},
    {"Replace past the end", "abc", kLong, [](auto& s, auto& t) { s.Replace(t, 2); }},
    {"ReplaceAll units", "a-b-c", "", [](auto& s, auto&) { s.ReplaceAll('-', '+'); }},
    {"ToUpper", "stra\337e", "", [](auto& s, auto&) { s.ToUpper(); }},
    {"ToLower wide", u"GR\u00dcN", "", [](auto& s, auto&) { s.ToLower(); }},
    {"Cut", "abcdef", "", [](auto& s, auto&) { s.Cut(1, 2); }},
    {"Trim", "  padded  ", "", [](auto& s, auto&) { s.Trim(); }},
    {"Fill", "abc", "", [](auto& s, auto&) { s.Fill(30, 'z'); }},
    {"Expand wide", u"ab", "",
     [](auto& s, auto&) { s.Expand(16, static_cast<unsigned short>(0xe9)); }},
    {"SetCodeSet", "caf\xe9", "", [](auto& s, auto&) { s.SetCodeSet(253); }},
    {"MapToCodeSet", "caf\xe9", "", [](auto& s, auto&) { s.MapToCodeSet(2); }},
    {"CopyMapped", "old", u"wide \u00e9", [](auto& s, auto& t) { s.CopyMapped(t, 1); }},
};

// The same for both case-insensitive strings.
template <typename T>
const StringCase<T> kFoldedCases[] = {
    {"copy", "copied", "", nullptr, [](auto& s, auto&) { return T(s); }},
    {"+", "left", "right", nullptr, [](auto& s, auto& t) { return s + t; }},
    {"Copy", "abcdef", "", nullptr, [](auto& s, auto&) { return s.Copy(1, 3); }},
    {"assignment", "old", "assigned", [](auto& s, auto& t) { s = t; }},
    {"Assign(const char*)", "old", "", [](auto& s, auto&) { s = "assigned"; }},
    {"+=", "head", "tail", [](auto& s, auto& t) { s += t; }},
    {"Insert", "head", "middle", [](auto& s, auto& t) { s.Insert(t, 2); }},
    {"Replace", "abc", "xyz", [](auto& s, auto& t) { s.Replace(t, 2); }},
    {"Cut", "abcdef", "", [](auto& s, auto&) { s.Cut(1, 2); }},
    {"Expand", "ab", "", [](auto& s, auto&) { s.Expand(6, 'x'); }},
    {"Fill", "ab", "", [](auto& s, auto&) { s.Fill(4, 'y'); }},
    {"ToUpper", "MiXeD", "", [](auto& s, auto&) { s.ToUpper(); }},
};

template <typename Cases>
void ExhaustAll(const std::string& type, const Cases& cases) {
  for (const auto& c : cases) Exhaust(type + c.name, [&] { return c.Run(); });
}

// Its two arguments built before the run is armed, as in the table.
Outcome ReplaceAll(Literal value, Literal from, Literal to) {
  KaString s = value.Make<KaString>(), f = from.Make<KaString>(), t = to.Make<KaString>();
  return Edit(s, [&] { s.ReplaceAll(f, t); });
}

// --- The tests ---------------------------------------------------------------------------------

class AllocationFailure : public testing::Test {
 protected:
  void SetUp() override {
    M();  // made unarmed
    g_handlerCalls = 0;
    previous_ = KaSetMemoryHandler(CountingHandler);
  }
  void TearDown() override {
    KaSetMemoryHandler(previous_);
#ifdef KA_TEST_ASAN
    EXPECT_EQ(0, __lsan_do_recoverable_leak_check()) << "leaks: see the report above";
#endif
  }
  KaMemoryHandler previous_ = nullptr;
};

// The injector works: a failed allocation reaches the library as one.
TEST_F(AllocationFailure, InjectorFailsTheChosenAllocation) {
  g_inject = Injector{false, false, 2, 0, 0};
  Values first(Ka4B_T), second(Ka4B_T);
  Armed([&] {
    first.p = M().Create(Ka4B_T, kCount);
    second.p = M().Create(Ka4B_T, kCount);
  });
  EXPECT_NE(nullptr, first.p);
  EXPECT_EQ(nullptr, second.p);
  EXPECT_EQ(1, g_handlerCalls);
}

TEST_F(AllocationFailure, Rows) {
  for (signed char id : kRows) {
    for (const RowOperation& op : kRowOperations) {
      if ((op.rows & (IsStringRow(id) ? kStrings : kPrimitive)) == 0) continue;
      const auto run = [&] {
        Values v(id, Numbers(id, 5));
        return op.run(v);
      };
      Exhaust("row " + std::to_string(id) + " " + op.name, run, op.rule);
    }
  }
}

TEST_F(AllocationFailure, KaStringEdits) {
  ExhaustAll("", kStringCases);
  Exhaust("ReplaceAll", [] { return ReplaceAll("a-b-c-d", "-", "+="); });
  Exhaust("ReplaceAll from other code sets",
          [] { return ReplaceAll("a-b-c-d", u"-", u"\u00e9\u00e8"); });
}

TEST_F(AllocationFailure, CaseInsensitiveStringEdits) {
  ExhaustAll("KaIString ", kFoldedCases<KaIString>);
  ExhaustAll("KaCaseIString ", kFoldedCases<KaCaseIString>);
}

}  // namespace
