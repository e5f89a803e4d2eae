#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "tests/stress/World.h"

namespace lumo::stress {
namespace {

struct Options {
  std::uint64_t seed = 1;
  double seconds = 2;
  int threads = 4;
};

/// Fails when a thread makes no step for long: it waits for itself, or threads wait for each other.
void watch(const std::vector<std::unique_ptr<Worker>>& workers, std::condition_variable& ended,
           std::mutex& mutex, const std::size_t& running) {
  std::vector<std::uint64_t> before(workers.size());
  std::unique_lock lock(mutex);
  while (!ended.wait_for(lock, std::chrono::seconds(60), [&] { return running == 0; })) {
    for (std::size_t i = 0; i < workers.size(); ++i) {
      if (std::exchange(before[i], workers[i]->steps()) == workers[i]->steps())
        workers[i]->fail("no progress");
    }
  }
}

std::uint64_t runThreads(const std::vector<std::unique_ptr<Worker>>& workers, double seconds) {
  std::mutex mutex;
  std::condition_variable ended;
  std::size_t running = workers.size();
  std::vector<std::thread> threads;
  for (const auto& worker : workers) {
    threads.emplace_back([&, one = worker.get()] {
      one->run(seconds);
      const std::lock_guard lock(mutex);
      if (--running == 0) ended.notify_all();
    });
  }
  watch(workers, ended, mutex, running);
  std::uint64_t steps = 0;
  for (auto& thread : threads) thread.join();
  for (const auto& worker : workers) steps += worker->steps();
  return steps;
}

void run(const Options& options) {
  const auto world = std::make_shared<World>(options.threads == 1);
  world->sdk = std::make_shared<fake::Provider>(world);
  LMRTCProvider::install(world->sdk);
  MainQueue::setExecutor([&world](MainQueue::Task task) { world->post(std::move(task)); });
  Console::setSink({});
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
  LMFwLog::getInstance().setThreshold(options.seed % 2 == 0 ? 0 : 4);  // silence shares less between threads

  std::vector<std::unique_ptr<Worker>> workers;
  for (int i = 0; i < options.threads; ++i)
    workers.push_back(std::make_unique<Worker>(*world, options.seed, i));
  std::cout << "seed " << options.seed << ", " << options.threads << " threads" << std::endl;
  const auto steps = runThreads(workers, options.seconds);
  workers.front()->end();
  LMRTCProvider::install(nullptr);
  world->sdk = nullptr;
  for (const auto& engine : world->engines)
    workers.front()->require(engine.expired(), "an engine is still alive");
  const auto last = std::make_unique<Worker>(*world, options.seed, 0);
  workers.clear();
  last->require(fake::Counted::alive() == 0,
                std::to_string(fake::Counted::alive()) + " objects are still alive");
  std::cout << steps << " steps, " << world->made << " engines" << std::endl;
}

Options parse(const std::vector<std::string>& arguments) {
  Options options;
  if (const char* seconds = std::getenv("LUMO_STRESS_SECONDS")) options.seconds = std::stod(seconds);
  for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
    const auto& name = arguments[i];
    const auto& value = arguments[i + 1];
    if (name == "--seed") {
      options.seed = std::stoull(value);
    } else if (name == "--seconds") {
      options.seconds = std::stod(value);
    } else if (name == "--threads") {
      options.threads = std::stoi(value);
    } else {
      throw std::invalid_argument(name);
    }
  }
  return options;
}

}  // namespace
}  // namespace lumo::stress

int main(int count, char** arguments) try {
  lumo::stress::run(lumo::stress::parse({arguments + 1, arguments + count}));
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\nusage: lumo-stress [--seed N] [--seconds S] [--threads T]\n";
  return 2;
}
