// SPDX-License-Identifier: MIT
#include "opc/model/detail/XercesMemory.h"

#include <array>
#include <functional>
#include <new>
#include <string>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "opc/Exception.h"

namespace opc::model::detail {
namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);
// Starting takes 0.75 MB of it. Pages that nobody touches cost nothing.
constexpr std::size_t kBlockSize = std::size_t{1} << 20;

// Xerces-C is never to be used again after a panic.
bool isBroken = false;

[[noreturn]] void refuseBroken(const std::string& why) {
  throw Exception(ErrorCode::InvalidState,
                  "cannot start Xerces-C: " + why + "; there may not be enough memory");
}

// The one that comes with Xerces-C ends the process.
class ThrowingPanicHandler final : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons reason) override {
    isBroken = true;
    refuseBroken(getPanicReasonString(reason));
  }
};

XercesMemory& memory() {
  alignas(kAlignment) static std::array<unsigned char, kBlockSize> block;
  static XercesMemory theMemory(block.data(), block.size());
  return theMemory;
}

}  // namespace

void* XercesMemory::allocate(XMLSize_t size) {
  if (isCritical_) {
    if (void* taken = takeFromBlock(size)) return taken;
  }
  void* allocated = ::operator new(size, std::nothrow);
  if (allocated == nullptr) throw xercesc::OutOfMemoryException();
  return allocated;
}

void XercesMemory::deallocate(void* memory) {
  if (!isInBlock(memory)) return ::operator delete(memory);
  // What was started with is given up at the end, all together.
  if (--living_ == 0) used_ = 0;
}

void* XercesMemory::takeFromBlock(std::size_t size) {
  if (size > size_ - used_) return nullptr;
  unsigned char* taken = block_ + used_;
  const std::size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
  used_ = rounded < size_ - used_ ? used_ + rounded : size_;
  ++living_;
  return taken;
}

bool XercesMemory::isInBlock(const void* memory) const {
  const std::less<const void*> isBefore;
  return !isBefore(memory, block_) && isBefore(memory, block_ + size_);
}

void startXerces() {
  if (isBroken) refuseBroken("it failed to start before");
  static ThrowingPanicHandler panicHandler;
  const XercesMemory::Critical critical(memory());
  xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                        &panicHandler, &memory());
}

void stopXerces() noexcept {
  const XercesMemory::Critical critical(memory());
  xercesc::XMLPlatformUtils::Terminate();
}

}  // namespace opc::model::detail
