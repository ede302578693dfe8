// A build started from the editor: runs on a thread of its own over a copy of the project, and
// keeps its --json events so that any number of streams, early or late, can follow it.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace wren {

/// The editor's current (or last) build and its event lines.
class TWrenEditorRun {
 public:
  TWrenEditorRun() = default;
  ~TWrenEditorRun();
  TWrenEditorRun(const TWrenEditorRun&) = delete;
  TWrenEditorRun& operator=(const TWrenEditorRun&) = delete;

  /// Starts a build of the project text as if read from fileName (its folder is where relative
  /// paths start). False when a build is still going. id is the new run's number, from 1.
  bool Start(const std::string& projectText, const std::string& fileName, bool dryRun, int& id);
  /// Asks the running build to stop; its step ends as stopped.
  void Stop();
  bool Running() const;

  /// What a stream gets: the run, its events from `from` on, and whether the run is over.
  struct TEvents {
    int run = 0;  // 0: no run yet
    std::vector<std::string> lines;
    bool ended = false;
  };
  /// The events of the current run from index `from` (of run `run`; another run starts at 0),
  /// waiting up to `wait` for at least one when there are none yet.
  TEvents Events(int run, size_t from, std::chrono::milliseconds wait);
  /// Wakes every waiting stream and makes them end (the server is stopping).
  void Shutdown();
  bool ShuttingDown() const { return shutdown_.load(); }

 private:
  void Add(int run, const std::string& line);
  /// Adds the run's last lines and ends it, at once.
  void Finish(int run, const std::vector<std::string>& lines);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::thread thread_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> shutdown_{false};
  int run_ = 0;
  bool running_ = false;
  std::vector<std::string> lines_;
};

}  // namespace wren
