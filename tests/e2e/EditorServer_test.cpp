// `marrowby edit` end to end: the real executable serving on a port of its own, driven over HTTP.
#include <httplib.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "CliMachine.h"

namespace wren {
namespace {

using nlohmann::json;

/// A running `marrowby edit --no-browser`, its address read from the first line it prints.
class EditorProcess {
 public:
  EditorProcess(const CliMachine& m, const std::string& project) {
    int out[2];
    if (::pipe(out) != 0) throw std::runtime_error("pipe failed");
    const std::vector<std::string> command = m.Command({"edit", project, "--no-browser"});
    std::vector<char*> argv;
    for (const std::string& a : command) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    const std::string errFile = m.dir / "editor.err";
    posix_spawn_file_actions_addopen(&actions, 2, errFile.c_str(), O_WRONLY | O_CREAT, 0644);
    const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (rc != 0) pid = -1;
    // The address is the first line; a server that never prints one fails here, not by hanging.
    pollfd p{out[0], POLLIN, 0};
    char c = 0;
    while (::poll(&p, 1, 60000) == 1 && ::read(out[0], &c, 1) == 1 && c != '\n') firstLine += c;
    ::close(out[0]);
    // http://127.0.0.1:PORT/?token=<32 lower hex>
    const std::string prefix = "http://127.0.0.1:";
    const size_t slash = firstLine.find("/?token=");
    if (firstLine.rfind(prefix, 0) == 0 && slash != std::string::npos && slash > prefix.size() &&
        firstLine.find_first_not_of("0123456789", prefix.size()) == slash) {
      const std::string hex = firstLine.substr(slash + 8);
      if (hex.size() == 32 && hex.find_first_not_of("0123456789abcdef") == std::string::npos) {
        port = std::stoi(firstLine.substr(prefix.size(), slash - prefix.size()));
        token = hex;
      }
    }
  }
  ~EditorProcess() {
    if (pid > 0) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
    }
  }

  /// Sends the signal and waits (at most a minute) for the exit code; -1 when it did not end.
  int Signal(int sig) {
    ::kill(pid, sig);
    for (int i = 0; i < 600; ++i) {
      int status = 0;
      if (::waitpid(pid, &status, WNOHANG) == pid) {
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return -1;
  }

  httplib::Headers Auth() const { return {{"X-Marrowby-Token", token}}; }
  httplib::Client Client() const {
    httplib::Client client("127.0.0.1", port);
    client.set_read_timeout(60, 0);
    return client;
  }
  json Post(const std::string& path, const json& body, int* status = nullptr) const {
    auto res = Client().Post(path.c_str(), Auth(), body.dump(), "application/json");
    if (!res) return json{{"transport", "failed"}};
    if (status) *status = res->status;
    return json::parse(res->body);
  }

  /// Reads the run's event stream until the build's end event (or, with `until`, that event).
  std::vector<json> Events(const std::string& until = "build",
                           const std::function<void(const json&)>& onEvent = {},
                           const std::string& lastEventId = "") const {
    std::vector<json> events;
    std::string buffer;
    httplib::Headers headers;
    if (!lastEventId.empty()) headers.emplace("Last-Event-ID", lastEventId);
    Client().Get(("/api/run/events?token=" + token).c_str(), headers,
                 [&](const char* data, size_t size) {
                   buffer.append(data, size);
                   for (size_t end = buffer.find("\n\n"); end != std::string::npos;
                        end = buffer.find("\n\n")) {
                     const std::string block = buffer.substr(0, end);
                     buffer.erase(0, end + 2);
                     const size_t at = block.find("data: ");
                     if (at == std::string::npos) continue;
                     events.push_back(json::parse(block.substr(at + 6)));
                     if (onEvent) onEvent(events.back());
                     if (events.back()["event"] == until) return false;
                   }
                   return true;
                 });
    return events;
  }

  pid_t pid = -1;
  std::string firstLine, token;
  int port = 0;
};

TEST(EditorServer, OnlyTheTokenHolderOnThisHostAndOriginIsServed) {
  CliMachine m;
  EditorProcess editor(m, m.dir / "new.mbproj");
  ASSERT_GT(editor.port, 0) << "first line: " << editor.firstLine;
  const std::string port = std::to_string(editor.port);
  struct Case {
    std::string path;
    httplib::Headers headers;
    int status;
  };
  const Case cases[] = {
      {"/api/project", {}, 403},
      {"/api/project", {{"X-Marrowby-Token", std::string(32, '0')}}, 403},
      {"/api/project?token=" + editor.token, {}, 403},  // the API wants the header
      {"/api/project", {{"X-Marrowby-Token", editor.token}}, 200},
      {"/api/project", {{"X-Marrowby-Token", editor.token}, {"Host", "evil.example:" + port}}, 403},
      {"/api/project", {{"X-Marrowby-Token", editor.token}, {"Host", "localhost:" + port}}, 200},
      {"/api/project", {{"X-Marrowby-Token", editor.token}, {"Origin", "http://evil.example"}}, 403},
      {"/api/project",
       {{"X-Marrowby-Token", editor.token}, {"Origin", "http://localhost:" + port}}, 200},
      {"/", {}, 403},
      {"/?token=" + std::string(32, 'f'), {}, 403},
      {"/api/run/events?token=wrong", {}, 403},
      {"/api/no-such-route", {{"X-Marrowby-Token", editor.token}}, 404},
      {"/editor.js", {}, 403},
      {"/editor.css?token=wrong", {}, 403},
  };
  for (const Case& c : cases) {
    auto res = editor.Client().Get(c.path.c_str(), c.headers);
    ASSERT_TRUE(res) << c.path;
    EXPECT_EQ(res->status, c.status) << c.path;
    EXPECT_EQ(res->get_header_value("X-Content-Type-Options"), "nosniff") << c.path;
    EXPECT_EQ(res->get_header_value("Cache-Control"), "no-store") << c.path;
    EXPECT_EQ(res->get_header_value("Content-Security-Policy").rfind("default-src 'self';", 0), 0u);
    if (c.status != 200) {
      EXPECT_TRUE(json::parse(res->body).contains("error")) << res->body;
    }
  }
  // The page's files are served as they stand in the source, each with its type; the page's
  // links to them carry the token.
  const std::string web = std::string(SOURCE_DIR) + "/cli/editor/web/";
  const std::map<std::string, std::string> types = {
      {".html", "text/html"}, {".js", "text/javascript"}, {".css", "text/css"}};
  std::error_code none;  // before the page's files are added, the folder may not be there
  for (const auto& entry : std::filesystem::directory_iterator(web, none)) {
    const std::string name = entry.path().filename().string();
    const std::string path = (name == "index.html" ? "/" : "/" + name) + "?token=" + editor.token;
    auto res = editor.Client().Get(path.c_str());
    ASSERT_TRUE(res) << name;
    EXPECT_EQ(res->status, 200) << name;
    std::string expected = test::ReadFile(entry.path().string());
    if (name == "index.html") {
      for (const std::string link : {"\"editor.js", "\"editor.css"}) {
        const size_t at = expected.find(link + "\"");
        ASSERT_NE(at, std::string::npos) << link;
        expected.insert(at + link.size(), "?token=" + editor.token);
      }
    }
    EXPECT_EQ(res->body, expected) << name;
    if (types.count(entry.path().extension().string())) {
      EXPECT_EQ(res->get_header_value("Content-Type").rfind(types.at(entry.path().extension()), 0),
                0u)
          << name;
    }
  }
  if (!test::Exists(web + "index.html")) {
    EXPECT_EQ(editor.Client().Get(("/?token=" + editor.token).c_str())->status, 404);
  }

  const json project = json::parse(editor.Client().Get("/api/project", editor.Auth())->body);
  EXPECT_EQ(project["file"], m.dir / "new.mbproj");
  EXPECT_FALSE(project["exists"].get<bool>());
  EXPECT_EQ(editor.Signal(SIGTERM), 0);
  EXPECT_FALSE(test::Exists(m.dir / "new.mbproj"));  // nothing saved, nothing written

  // A project that cannot be read is refused before anything listens.
  test::WriteFile(m.dir / "bad.mbproj", "<MarrowbyProject version=\"1\"><Actions>");
  std::string out, err;
  EXPECT_EQ(m.Run({"edit", m.dir / "bad.mbproj", "--no-browser"}, &out, &err), 2);
  EXPECT_EQ(out, "");
  EXPECT_NE(err.find("bad.mbproj"), std::string::npos) << err;
}

TEST(EditorServer, RunStreamsTheBuildAndALateStreamGetsItFromTheStart) {
  CliMachine m;
  test::WriteFile(m.sn + ".recorder.json", R"({"stdout": "tool says hello\n"})");
  m.WriteProject("p.mbproj", SnStep("-v a.dll"));
  EditorProcess editor(m, m.dir / "p.mbproj");
  ASSERT_GT(editor.port, 0) << editor.firstLine;
  // The run is of the project as edited, not as saved.
  editor.Post("/api/steps/0/description", {{"description", "verify"}});
  EXPECT_EQ(editor.Post("/api/run", json::object())["run"], 1);
  const std::vector<json> events = editor.Events();
  std::vector<std::string> kinds;
  for (const json& e : events) kinds.push_back(e["event"]);
  ASSERT_GE(events.size(), 4u);
  EXPECT_EQ(kinds.front(), "start");
  EXPECT_EQ(kinds.back(), "build");
  const auto step = std::find(kinds.begin(), kinds.end(), "step");
  ASSERT_NE(step, kinds.end());
  EXPECT_EQ(events[step - kinds.begin()]["description"], "verify");
  EXPECT_TRUE(std::any_of(events.begin(), events.end(), [](const json& e) {
    return e["event"] == "log" && e["text"] == "tool says hello";
  }));
  EXPECT_TRUE(std::any_of(events.begin(), events.end(), [](const json& e) {
    return e["event"] == "result" && e["success"] == true && e["exitCode"] == 0;
  }));
  EXPECT_TRUE(events.back()["success"].get<bool>());
  const json argv = test::RecordedCall(m.sn)["argv"];
  EXPECT_EQ(std::vector<json>(argv.begin() + 1, argv.end()), (std::vector<json>{"-v", "a.dll"}));
  // A stream opened after the end gets the same run again; one that reconnects, only the rest.
  EXPECT_EQ(editor.Events().size(), events.size());
  const std::vector<json> rest =
      editor.Events("build", {}, "1." + std::to_string(events.size() - 2));
  ASSERT_EQ(rest.size(), 1u);
  EXPECT_EQ(rest[0], events.back());
  EXPECT_EQ(editor.Signal(SIGTERM), 0);
}

TEST(EditorServer, StopEndsARunAndASignalEndsTheEditorWithItsBuild) {
  CliMachine m;
  test::WriteFile(m.sn + ".recorder.json", R"({"stdout": "started\n", "sleepMs": 60000})");
  m.WriteProject("p.mbproj", SnStep("-slow"));
  EditorProcess editor(m, m.dir / "p.mbproj");
  ASSERT_GT(editor.port, 0) << editor.firstLine;
  ASSERT_EQ(editor.Post("/api/run", json::object())["run"], 1);
  bool stopSent = false;
  const std::vector<json> events = editor.Events("build", [&](const json& e) {
    if (e["event"] != "log" || stopSent) return;
    int status = 0;
    editor.Post("/api/run", json::object(), &status);
    EXPECT_EQ(status, 409) << "a second run while one is going";
    // The build reads the options from its own thread: they wait for the run to end.
    auto options = editor.Client().Get("/api/options", editor.Auth());
    ASSERT_TRUE(options && options->status == 200);
    const int first = json::parse(options->body)["options"][0]["index"].get<int>();
    editor.Post("/api/options/" + std::to_string(first) + "/apply", json::object(), &status);
    EXPECT_EQ(status, 409) << "options applied while a build runs";
    editor.Post("/api/run/stop", json::object());
    stopSent = true;
  });
  ASSERT_TRUE(stopSent);
  EXPECT_TRUE(events.back()["stopped"].get<bool>());
  EXPECT_FALSE(events.back()["success"].get<bool>());

  // Ctrl-C while a build runs: the build is stopped and the editor exits 0.
  std::filesystem::remove(m.sn + ".argv.json");
  ASSERT_EQ(editor.Post("/api/run", json::object())["run"], 2);
  // The first log line is the host's own command line: wait for the tool itself.
  json call;
  for (int i = 0; i < 600 && !call.contains("pid"); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    call = test::RecordedCall(m.sn);
  }
  ASSERT_TRUE(call.contains("pid")) << "the tool never started";
  const pid_t tool = call["pid"].get<pid_t>();
  EXPECT_EQ(editor.Signal(SIGINT), 0);
  EXPECT_NE(::kill(tool, 0), 0) << "the tool outlived the editor";
}

}  // namespace
}  // namespace wren
