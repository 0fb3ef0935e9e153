// KaLanguageContext: process-wide defaults and the language table.
#include "kai18n/langctx.h"

#include <atomic>

#include "kai18n/codeset.h"

namespace {

constexpr unsigned char kInitialCodeSet = 1;
constexpr unsigned char kInitial8Bit = 1;
constexpr unsigned char kInitial16Bit = 253;
constexpr unsigned char kInitialNative = 1;
constexpr unsigned char kInitialLanguage = 0;
constexpr unsigned short kInitialCmpOp = 16;

// Constant-initialised, so no static initialiser order matters.
constinit std::atomic<unsigned char> g_codeSet{kInitialCodeSet};
constinit std::atomic<unsigned char> g_8Bit{kInitial8Bit};
constinit std::atomic<unsigned char> g_16Bit{kInitial16Bit};
constinit std::atomic<unsigned char> g_native{kInitialNative};
constinit std::atomic<unsigned char> g_language{kInitialLanguage};
constinit std::atomic<unsigned short> g_cmpOp{kInitialCmpOp};

constexpr const char* kLanguageNames[] = {
    "neutral",   "English",   "German",  "French",  "Spanish",   "Italian", "Portuguese", "Dutch",
    "Danish",    "Norwegian", "Swedish", "Finnish", "Icelandic", "Polish",  "Czech",      "Slovak",
    "Hungarian", "Greek",     "Russian", "Turkish", "Japanese",  "Chinese", "Korean",
};
constexpr unsigned kLanguageCount = sizeof kLanguageNames / sizeof kLanguageNames[0];

bool IsKnownWithWidth(unsigned char codeSet, unsigned char width) {
  const KaCodeSet* set = codeSet == 0 ? nullptr : KaCodeSet::Get(codeSet);
  return set != nullptr && set->UnitWidth() == width && set->GetKind() != KaCodeSet::Kind::kOrders;
}

bool StoreIf(std::atomic<unsigned char>& slot, unsigned char value, bool valid) {
  if (valid) slot.store(value);
  return valid;
}

}  // namespace

unsigned char KaLanguageContext::GetDefaultCodeSet() { return g_codeSet.load(); }
unsigned char KaLanguageContext::GetDefault8BitCodeSet() { return g_8Bit.load(); }
unsigned char KaLanguageContext::GetDefault16BitCodeSet() { return g_16Bit.load(); }
unsigned char KaLanguageContext::GetNativeCodeSet() { return g_native.load(); }
unsigned char KaLanguageContext::GetDefaultLanguage() { return g_language.load(); }
unsigned short KaLanguageContext::GetDefaultCmpOp() { return g_cmpOp.load(); }

bool KaLanguageContext::SetDefaultCodeSet(unsigned char codeSet) {
  return StoreIf(g_codeSet, codeSet, IsKnownWithWidth(codeSet, 1) || IsKnownWithWidth(codeSet, 2));
}
bool KaLanguageContext::SetDefault8BitCodeSet(unsigned char codeSet) {
  return StoreIf(g_8Bit, codeSet, IsKnownWithWidth(codeSet, 1));
}
bool KaLanguageContext::SetDefault16BitCodeSet(unsigned char codeSet) {
  return StoreIf(g_16Bit, codeSet, IsKnownWithWidth(codeSet, 2));
}
bool KaLanguageContext::SetNativeCodeSet(unsigned char codeSet) {
  return StoreIf(g_native, codeSet, IsKnownWithWidth(codeSet, 1));
}
bool KaLanguageContext::SetDefaultLanguage(unsigned char language) {
  return StoreIf(g_language, language, IsLanguageKnown(language));
}

void KaLanguageContext::SetDefaultCmpOp(unsigned short cmpOp) { g_cmpOp.store(cmpOp); }

bool KaLanguageContext::IsCodeSetKnown(unsigned char codeSet) {
  return KaCodeSet::Get(codeSet) != nullptr;
}

unsigned char KaLanguageContext::GetCodeSetUnitWidth(unsigned char codeSet) {
  return codeSet > 224 ? 2 : 1;
}

const char* KaLanguageContext::GetCodeSetName(unsigned char codeSet) {
  if (codeSet == 0) return "native";
  const KaCodeSet* set = KaCodeSet::Get(codeSet);
  return set != nullptr ? set->Name() : nullptr;
}

bool KaLanguageContext::IsLanguageKnown(unsigned char language) {
  return language < kLanguageCount;
}

const char* KaLanguageContext::GetLanguageName(unsigned char language) {
  return IsLanguageKnown(language) ? kLanguageNames[language] : nullptr;
}

bool KaLanguageContext::IsIdeographicLanguage(unsigned char language) {
  return (language & 127) >= 20;
}

void KaLanguageContext::Reset() {
  g_codeSet.store(kInitialCodeSet);
  g_8Bit.store(kInitial8Bit);
  g_16Bit.store(kInitial16Bit);
  g_native.store(kInitialNative);
  g_language.store(kInitialLanguage);
  g_cmpOp.store(kInitialCmpOp);
}

int ___KaI18NContext(int start) {
  if (start == 0) KaLanguageContext::Reset();
  return 0;
}
