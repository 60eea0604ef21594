// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "opc/Exception.h"
#include "opc/FileIo.h"
#include "opc/SystemCall.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;
constexpr const char* kWhat = "cannot write to a temporary file";

// Below, a call of its own and the flush before it cost more than passing the bytes on.
constexpr std::uint64_t kWorthTheKernel = std::uint64_t{256} << 10;
// So that an interrupt does not wait for gigabytes.
constexpr std::uint64_t kCopyAtOnce = std::uint64_t{16} << 20;

}  // namespace

OutputFile::OutputFile(int descriptor) : descriptor_(descriptor) {
  buffer_.resizeForOverwrite(kBufferSize);
}

void OutputFile::write(Bytes data) {
  if (data.size() > kBufferSize - used_) flush();
  if (data.size() >= kBufferSize) {
    writeFully(descriptor_, flushed_, data.data(), data.size(), kWhat);
    flushed_ += data.size();
  } else if (!data.empty()) {
    std::memcpy(buffer_.data() + used_, data.data(), data.size());
    used_ += data.size();
  }
}

void OutputFile::patch(std::uint64_t offset, Bytes data) {
  if (offset >= flushed_) {
    std::memcpy(buffer_.data() + (offset - flushed_), data.data(), data.size());
    return;
  }
  if (data.size() > flushed_ - offset) flush();
  writeFully(descriptor_, offset, data.data(), data.size(), kWhat);
}

void OutputFile::rewindTo(std::uint64_t offset) {
  if (offset >= flushed_) {
    used_ = static_cast<std::size_t>(offset - flushed_);
    return;
  }
  const auto cut = [&] { return ::ftruncate(descriptor_, static_cast<off_t>(offset)); };
  if (uninterrupted(cut) != 0) throw SystemError(kWhat, errno);
  flushed_ = offset;
  used_ = 0;
}

void OutputFile::copyFrom(const PackageFile& file, std::uint64_t offset, std::uint64_t size,
                          const OnCopied& copied) {
  const auto read = [&](std::uint64_t at, unsigned char* into, std::size_t count) {
    file.readAt(at, into, count);
  };
  append(file.descriptor(), offset, size, read, copied);
}

void OutputFile::repeat(std::uint64_t offset, std::uint64_t size) {
  if (offset >= flushed_ && size <= kBufferSize - used_) {
    return write({buffer_.data() + (offset - flushed_), static_cast<std::size_t>(size)});
  }
  if (offset + size > flushed_) flush();
  const auto read = [this](std::uint64_t at, unsigned char* into, std::size_t count) {
    readFully(descriptor_, at, into, count, "cannot read a temporary file");
  };
  append(descriptor_, offset, size, read, [](std::uint64_t) {});
}

void OutputFile::append(int from, std::uint64_t offset, std::uint64_t size, const Read& read,
                        const OnCopied& copied) {
  std::uint64_t done = 0;
  const auto copyTo = [&](std::uint64_t end) {
    while (done < end) {
      if (used_ == kBufferSize) flush();
      const auto count =
          static_cast<std::size_t>(std::min<std::uint64_t>(end - done, kBufferSize - used_));
      read(offset + done, buffer_.data() + used_, count);
      used_ += count;
      done += count;
      copied(done);
    }
  };
  if (size >= kWorthTheKernel) {
    // The kernel shares whole blocks if the file system can: nothing is copied then.
    if (position() % kBlock == offset % kBlock) copyTo((kBlock - offset % kBlock) % kBlock);
    flush();
    done += copyInKernel(from, offset + done, size - done,
                         [&, start = done](std::uint64_t count) { copied(start + count); });
  }
  copyTo(size);
}

// Returns how far it came: not every file system and kernel can do it, or all of it.
std::uint64_t OutputFile::copyInKernel(int from, std::uint64_t offset, std::uint64_t size,
                                       const OnCopied& copied) {
  auto next = static_cast<off_t>(offset);
  std::uint64_t done = 0;
  while (done < size) {
    auto to = static_cast<off_t>(flushed_);
    const auto wanted = static_cast<std::size_t>(std::min(size - done, kCopyAtOnce));
    const ssize_t count = ::copy_file_range(from, &next, descriptor_, &to, wanted, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
      throw SystemError(kWhat, errno);
    }
    // Every other refusal is left to plain reading and writing, which knows its own reasons.
    if (count <= 0) return done;
    // The disk may begin before the commit waits for it. A refusal means nothing.
    ::sync_file_range(descriptor_, static_cast<off_t>(flushed_), count, SYNC_FILE_RANGE_WRITE);
    done += static_cast<std::uint64_t>(count);
    flushed_ += static_cast<std::uint64_t>(count);
    copied(done);
  }
  return done;
}

void OutputFile::flush() {
  writeFully(descriptor_, flushed_, buffer_.data(), used_, kWhat);
  flushed_ += used_;
  used_ = 0;
}

}  // namespace opc::zippackage::detail
