// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "opc/interfaces/Background.h"
#include "opc/plservices/detail/PartReader.h"

namespace opc::plservices::detail {

/// A PartReader whose blocks a second thread reads before they are wanted, if one is
/// available. Until the ReadAhead is destroyed, only that thread may use the package.
class ReadAhead {
 public:
  /// `starter` may be empty.
  ReadAhead(PartReader reader, const interfaces::BackgroundStarter& starter);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  /// The next block; there must be one. Throws what the reader throws, where it would have.
  PartBlock read();

 private:
  struct Entry {
    PartBlock block;  // without data
    std::size_t at = 0;
    std::size_t size = 0;
    std::exception_ptr failure = nullptr;
  };
  /// Blocks that are handed over together, so that threads seldom meet.
  struct Batch {
    std::vector<Entry> entries;
    std::vector<unsigned char> data;
  };

  void help() noexcept;
  Batch emptyBatch();
  bool add(Batch& batch);
  bool hand(Batch batch);
  void waitForBatch();

  PartReader reader_;
  Batch current_;
  std::size_t next_ = 0;  // entry of current_

  // All from here on only where there is a helper: what works alone locks nothing.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> batches_;   // read and not yet taken
  Batch used_;                  // whose memory the next one takes over
  std::size_t ahead_ = 0;       // their bytes
  std::exception_ptr failure_;  // of the helper itself
  bool isStopped_ = false;
  std::unique_ptr<interfaces::BackgroundTask>
      helper_;  // declared last, so that it is destroyed first
};

}  // namespace opc::plservices::detail
