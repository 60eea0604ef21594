// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "opc/interfaces/Background.h"

namespace test {

/// The ways to run work: with a second thread, or without.
struct Starter {
  std::string name;
  opc::interfaces::BackgroundStarter starter;
};

class ThreadTask final : public opc::interfaces::BackgroundTask {
 public:
  explicit ThreadTask(std::function<void()> work) : thread_(std::move(work)) {}
  ~ThreadTask() override { thread_.join(); }
  ThreadTask(const ThreadTask&) = delete;
  ThreadTask& operator=(const ThreadTask&) = delete;

 private:
  std::thread thread_;
};

inline std::vector<Starter> starters() {
  const auto thread = [](std::function<void()> work) {
    return std::make_unique<ThreadTask>(std::move(work));
  };
  const auto nothing = [](const std::function<void()>&) { return nullptr; };
  return {{"Alone", nullptr}, {"WithASecondThread", thread}, {"WithoutAThreadToBeHad", nothing}};
}

}  // namespace test
