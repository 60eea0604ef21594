// SPDX-License-Identifier: MIT
#include "opc/model/detail/XercesMemory.h"

#include <array>
#include <cerrno>
#include <functional>
#include <new>
#include <string>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "opc/Exception.h"
#include "opc/model/XercesErrors.h"

namespace opc::model::detail {
namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);
// Starting takes 0.75 MB of it. Pages that are not touched cost nothing.
constexpr std::size_t kBlockSize = std::size_t{1} << 20;

// Xerces-C is never to be used again after a panic.
bool isBroken = false;

// It gives no useful reason, but only lacks memory. That is not a fault of the package.
[[noreturn]] void refuseBroken(const std::string& why) {
  throw SystemError("cannot start Xerces-C (" + why + ")", ENOMEM);
}

// The one that comes with Xerces-C ends the process.
class ThrowingPanicHandler final : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons reason) override {
    isBroken = true;
    refuseBroken(getPanicReasonString(reason));
  }
};

void initialise() {
  if (isBroken) refuseBroken("it failed to start before");
  alignas(kAlignment) static std::array<unsigned char, kBlockSize> block;
  // Never destroyed: Xerces-C, which points to them, is used until the very end of the process.
  static auto& memory = *new XercesMemory(block.data(), block.size());
  static auto& panicHandler = *new ThrowingPanicHandler;
  const XercesMemory::Critical critical(memory);
  xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                        &panicHandler, &memory);
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
  const std::less<const void*> isBefore;
  if (isBefore(memory, block_) || !isBefore(memory, block_ + size_)) ::operator delete(memory);
}

void* XercesMemory::takeFromBlock(std::size_t size) {
  if (size > size_ - used_) return nullptr;
  unsigned char* taken = block_ + used_;
  const std::size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
  used_ = rounded < size_ - used_ ? used_ + rounded : size_;
  return taken;
}

void startXerces() {
  // The host may use Xerces-C as well, and other threads of it may be in a call. So it is never
  // terminated. What it needs once lasts as long as the process.
  [[maybe_unused]] static const bool isStarted = [] {
    translatingXercesErrors("cannot start Xerces-C", initialise);
    return true;
  }();
}

}  // namespace opc::model::detail
