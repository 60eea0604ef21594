// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <xercesc/framework/MemoryManager.hpp>

namespace opc::model::detail {

/// The memory of Xerces-C. While it starts it has no way of saying that memory ran out, and ends
/// the process. So the start draws on a block set aside.
class XercesMemory final : public xercesc::MemoryManager {
 public:
  /// From here to the end of its life the block is used; on one thread at a time.
  class Critical {
   public:
    explicit Critical(XercesMemory& memory) : memory_(memory) { memory_.isCritical_ = true; }
    ~Critical() { memory_.isCritical_ = false; }
    Critical(const Critical&) = delete;
    Critical& operator=(const Critical&) = delete;

   private:
    XercesMemory& memory_;
  };

  XercesMemory(unsigned char* block, std::size_t size) : block_(block), size_(size) {}

  xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }
  /// Throws xercesc::OutOfMemoryException.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* memory) override;

 private:
  void* takeFromBlock(std::size_t size);

  unsigned char* block_;  ///< aligned for every type
  std::size_t size_;
  std::size_t used_ = 0;  ///< never becomes less: what the start allocates is kept
  bool isCritical_ = false;
};

/// Initialises Xerces-C in the first call, and does nothing in later ones. Any thread may call it.
/// Throws Exception if Xerces-C cannot start; the next call tries again.
void startXerces();

}  // namespace opc::model::detail
