// MemFile: an in-memory file of bytes with a current position.
//
// The object store hands stored records to the type manager as memory files;
// the SizeGetFromMemFile slots measure the elements that start at the current
// position. They look ahead with Seek, which never moves the position, so a
// size query leaves the file where it was.
#ifndef KABASE_MEMFILE_H_
#define KABASE_MEMFILE_H_

#include <cstddef>
#include <vector>

#include "kabase/export.h"

class KABASE_API MemFile {
 public:
  MemFile() = default;
  // A file holding a copy of `size` bytes at `data` (null is allowed with size 0),
  // positioned at its start.
  MemFile(const void* data, size_t size);

  // Bytes held, and the current position (0 .. Size()).
  size_t Size() const { return bytes_.size(); }
  size_t Tell() const { return position_; }
  // Bytes between the position and the end.
  size_t Remaining() const { return bytes_.size() - position_; }

  // A pointer to `length` bytes that start `offset` bytes after the current
  // position, or null when any of them lies past the end (or `length` is 0).
  // The position does not move. The pointer is valid until the next Write.
  const unsigned char* Seek(size_t offset, size_t length) const;

  // Moves the position; false, and no move, when `position` is past the end.
  bool SetPosition(size_t position);

  // Copies up to `length` bytes from the position into `destination` and
  // advances past them; answers the bytes copied (fewer at the end of data).
  size_t Read(void* destination, size_t length);

  // Writes `length` bytes at the position, growing the file as needed, and
  // advances past them; answers the bytes written (0 for a null source).
  size_t Write(const void* source, size_t length);

  // The whole content.
  const unsigned char* Data() const { return bytes_.data(); }

 private:
  std::vector<unsigned char> bytes_;
  size_t position_ = 0;
};

#endif  // KABASE_MEMFILE_H_
