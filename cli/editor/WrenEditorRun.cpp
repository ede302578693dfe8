#include "cli/editor/WrenEditorRun.h"

#include <sstream>

#include "cli/WrenBuildReporters.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenBuildEngine.h"
#include "runtime/WrenProject.h"

namespace wren {

namespace {

/// Hands every line the JSON reporter writes to a callback as soon as the event is complete.
class TLineListener : public IWrenBuildListener {
 public:
  explicit TLineListener(std::function<void(const std::string&)> emit) : emit_(std::move(emit)) {}
  TJsonReporter& Json() { return json_; }
  void Flush() {
    std::string text = buffer_.str();
    buffer_.str("");
    size_t start = 0;
    for (size_t nl = text.find('\n'); nl != std::string::npos; nl = text.find('\n', start)) {
      emit_(text.substr(start, nl - start));
      start = nl + 1;
    }
  }
  void OnInvalid(const TWrenValidationProblem& p) override {
    json_.OnInvalid(p);
    Flush();
  }
  void OnStepStart(const TWrenStepReport& s, int total) override {
    json_.OnStepStart(s, total);
    Flush();
  }
  void OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) override {
    json_.OnLog(s, stream, t);
    Flush();
  }
  void OnDryRun(const TWrenStepReport& s, const TWrenDryRunRecord& r) override {
    json_.OnDryRun(s, r);
    Flush();
  }
  void OnStepEnd(const TWrenStepReport& s) override {
    json_.OnStepEnd(s);
    Flush();
  }

 private:
  std::function<void(const std::string&)> emit_;
  std::ostringstream buffer_;
  TJsonReporter json_{buffer_};
};

}  // namespace

TWrenEditorRun::~TWrenEditorRun() {
  Shutdown();
  Stop();
  if (thread_.joinable()) thread_.join();
}

bool TWrenEditorRun::Start(const std::string& projectText, const std::string& fileName,
                           bool dryRun, int& id) {
  std::unique_lock lock(mutex_);
  if (running_) return false;
  if (thread_.joinable()) thread_.join();  // the last run is over; only its thread is left
  id = ++run_;
  running_ = true;
  lines_.clear();
  stop_ = false;
  thread_ = std::thread([this, id, projectText, fileName, dryRun] {
    TLineListener listener([this, id](const std::string& line) { Add(id, line); });
    listener.Json().Start("run", fileName);
    listener.Flush();
    TWrenProject project;
    TWrenProjectError error;
    TWrenBuildResult result;
    if (project.LoadFromText(projectText, fileName, CreateRegisteredAction, error)) {
      TWrenBuildOptions options;
      options.dryRun = dryRun;
      options.stopFlag = &stop_;
      result = RunBuild(project, options, listener);
    } else {
      listener.Json().Error(error.file, error.line, error.action, error.property, error.message);
      result.invalid = true;
    }
    // The end event and the end of the run are one step: whoever sees the one sees the other,
    // so a client may start the next run as soon as it has the end event.
    std::vector<std::string> last;
    TLineListener end([&last](const std::string& line) { last.push_back(line); });
    end.Json().Summary(result);
    end.Flush();
    Finish(id, last);
  });
  changed_.notify_all();
  return true;
}

void TWrenEditorRun::Stop() { stop_ = true; }

bool TWrenEditorRun::Running() const {
  std::lock_guard lock(mutex_);
  return running_;
}

void TWrenEditorRun::Add(int run, const std::string& line) {
  {
    std::lock_guard lock(mutex_);
    if (run != run_) return;
    lines_.push_back(line);
  }
  changed_.notify_all();
}

void TWrenEditorRun::Finish(int run, const std::vector<std::string>& lines) {
  {
    std::lock_guard lock(mutex_);
    if (run != run_) return;
    lines_.insert(lines_.end(), lines.begin(), lines.end());
    running_ = false;
  }
  changed_.notify_all();
}

TWrenEditorRun::TEvents TWrenEditorRun::Events(int run, size_t from,
                                                std::chrono::milliseconds wait) {
  std::unique_lock lock(mutex_);
  auto ready = [&] {
    return shutdown_ || (run_ != 0 && (run != run_ || from < lines_.size()));
  };
  changed_.wait_for(lock, wait, ready);
  TEvents events;
  events.run = run_;
  if (run_ == 0) return events;
  const size_t start = run == run_ ? std::min(from, lines_.size()) : 0;
  events.lines.assign(lines_.begin() + static_cast<std::ptrdiff_t>(start), lines_.end());
  events.ended = !running_;
  return events;
}

void TWrenEditorRun::Shutdown() {
  {
    std::lock_guard lock(mutex_);
    shutdown_ = true;
  }
  changed_.notify_all();
}

}  // namespace wren
