// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <xercesc/framework/MemoryManager.hpp>

namespace opc::model::detail {

/// The memory of Xerces-C. While it starts and stops it has no way of saying that memory ran out:
/// it ends the process, or throws out of destructors. So both draw on a block set aside.
class XercesMemory final : public xercesc::MemoryManager {
 public:
  /// From here to the end of its life the block is used.
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
  bool isInBlock(const void* memory) const;

  unsigned char* block_;  ///< aligned for every type
  std::size_t size_;
  std::size_t used_ = 0;
  std::size_t living_ = 0;  ///< allocations in the block
  bool isCritical_ = false;
};

/// Initialise and terminate Xerces-C; calls nest. The first throws Exception when it cannot start.
void startXerces();
void stopXerces() noexcept;

}  // namespace opc::model::detail
