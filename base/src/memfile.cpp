// MemFile: bytes in memory with a current position.
#include "kabase/memfile.h"

#include <algorithm>
#include <cstring>

#include "kabase/memory.h"
#include "reserve.h"

MemFile::MemFile(const void* data, size_t size) {
  if (data != nullptr && size > 0 && ka::detail::Reserve(bytes_, size)) {
    const auto* p = static_cast<const unsigned char*>(data);
    bytes_.assign(p, p + size);
  }
}

const unsigned char* MemFile::Seek(size_t offset, size_t length) const {
  const size_t remaining = Remaining();
  // Written so that no sum can wrap: offset and length are caller-chosen.
  if (length == 0 || offset > remaining || length > remaining - offset) return nullptr;
  return bytes_.data() + position_ + offset;
}

bool MemFile::SetPosition(size_t position) {
  if (position > bytes_.size()) return false;
  position_ = position;
  return true;
}

size_t MemFile::Read(void* destination, size_t length) {
  if (destination == nullptr) return 0;
  const size_t n = std::min(length, Remaining());
  if (n > 0) std::memcpy(destination, bytes_.data() + position_, n);
  position_ += n;
  return n;
}

size_t MemFile::Write(const void* source, size_t length) {
  if (source == nullptr || length == 0) return 0;
  if (length > bytes_.max_size() - position_) return 0;
  const size_t end = position_ + length;
  if (end > bytes_.size()) {
    // Growing may move the buffer, and the source may lie inside it.
    std::vector<unsigned char> grown;
    if (!ka::detail::Reserve(grown, end)) return 0;
    grown.assign(bytes_.begin(), bytes_.end());
    grown.resize(end);
    std::memmove(grown.data() + position_, source, length);
    bytes_.swap(grown);
  } else {
    std::memmove(bytes_.data() + position_, source, length);
  }
  position_ = end;
  return length;
}
