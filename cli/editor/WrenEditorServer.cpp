#include "cli/editor/WrenEditorServer.h"

#include <httplib.h>

#include <fstream>
#include <functional>
#include <regex>

#include "cli/WrenBuildReporters.h"
#include "cli/editor/WrenEditorWeb.h"

namespace wren {

using nlohmann::json;

namespace {

constexpr const char* kTokenHeader = "X-Marrowby-Token";

/// Compares without stopping at the first difference, so timing tells nothing about the token.
bool SameToken(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

void SendJson(httplib::Response& res, int status, const json& body) {
  res.status = status;
  res.set_content(JsonText(body), "application/json");
}

void SendError(httplib::Response& res, int status, const std::string& message,
               const json& extra = {}) {
  json body = extra.is_object() ? extra : json::object();
  body["error"] = message;
  SendJson(res, status, body);
}

json BodyOf(const httplib::Request& req) {
  if (req.body.empty()) return json::object();
  json body = json::parse(req.body, nullptr, false);
  if (body.is_discarded()) throw TWrenEditorError(400, "the request body is not JSON");
  return body;
}

int Number(const httplib::Request& req, size_t group) {
  return std::stoi(req.matches[static_cast<int>(group)].str());
}

/// Runs a route and turns its answer or its refusal into the response.
httplib::Server::Handler Route(std::function<json(const httplib::Request&)> handler) {
  return [handler = std::move(handler)](const httplib::Request& req, httplib::Response& res) {
    try {
      SendJson(res, 200, handler(req));
    } catch (const TWrenEditorError& e) {
      SendError(res, e.status, e.what(), e.extra);
    } catch (const json::exception& e) {
      SendError(res, 400, std::string("bad request: ") + e.what());
    } catch (const std::out_of_range&) {
      SendError(res, 404, "no such item");
    } catch (const std::exception& e) {
      SendError(res, 500, e.what());
    }
  };
}

}  // namespace

const char* WebContentType(std::string_view name) {
  auto ends = [&](std::string_view ext) {
    return name.size() >= ext.size() && name.substr(name.size() - ext.size()) == ext;
  };
  if (ends(".html")) return "text/html; charset=utf-8";
  if (ends(".js")) return "text/javascript; charset=utf-8";
  if (ends(".css")) return "text/css; charset=utf-8";
  if (ends(".svg")) return "image/svg+xml";
  if (ends(".png")) return "image/png";
  return "application/octet-stream";
}

std::string NewEditorToken() {
  unsigned char bytes[16] = {};
  std::ifstream random("/dev/urandom", std::ios::binary);
  if (!random.read(reinterpret_cast<char*>(bytes), sizeof bytes))
    throw std::runtime_error("cannot read /dev/urandom for the editor's token");
  static const char hex[] = "0123456789abcdef";
  std::string token;
  for (unsigned char b : bytes) {
    token += hex[b >> 4];
    token += hex[b & 15];
  }
  return token;
}

struct TWrenEditorServer::TImpl {
  httplib::Server server;
};

/// The page with its own script and style links carrying the token, so that they pass the check.
std::string WithTokenLinks(std::string html, const std::string& token) {
  for (const char* link : {"\"editor.js\"", "\"editor.css\""}) {
    const std::string quoted = link;
    const size_t at = html.find(quoted);
    if (at != std::string::npos)
      html.replace(at, quoted.size(), quoted.substr(0, quoted.size() - 1) + "?token=" + token + "\"");
  }
  return html;
}

TWrenEditorServer::TWrenEditorServer(TWrenEditorSession& session, std::string token)
    : impl_(std::make_unique<TImpl>()), session_(session), token_(std::move(token)) {}

TWrenEditorServer::~TWrenEditorServer() { Stop(); }

std::string TWrenEditorServer::Url() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/?token=" + token_;
}

bool TWrenEditorServer::Bind(int port, std::string& error) {
  httplib::Server& svr = impl_->server;
  svr.set_default_headers(
      {{"Content-Security-Policy",
        "default-src 'self'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
        "connect-src 'self'; frame-ancestors 'none'; base-uri 'none'; form-action 'none'"},
       {"X-Content-Type-Options", "nosniff"},
       {"Cache-Control", "no-store"},
       {"Referrer-Policy", "no-referrer"}});

  svr.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
    const std::string port = std::to_string(port_);
    const std::string host = req.get_header_value("Host");
    if (host != "127.0.0.1:" + port && host != "localhost:" + port) {
      SendError(res, 403, "this server answers only to 127.0.0.1:" + port);
      return httplib::Server::HandlerResponse::Handled;
    }
    if (req.has_header("Origin")) {
      const std::string origin = req.get_header_value("Origin");
      if (origin != "http://127.0.0.1:" + port && origin != "http://localhost:" + port) {
        SendError(res, 403, "requests from other web pages are refused");
        return httplib::Server::HandlerResponse::Handled;
      }
    }
    // Every request needs the token: API calls in a header, the page and its files in the URL
    // (a <script src> cannot send a header; the page is served with its links carrying it).
    const bool api = req.path.rfind("/api/", 0) == 0;
    std::string given = api ? req.get_header_value(kTokenHeader) : req.get_param_value("token");
    if (given.empty() && req.path == "/api/run/events") given = req.get_param_value("token");
    if (!SameToken(given, token_)) {
      SendError(res, 403, given.empty() ? "the token is missing" : "the token is wrong");
      return httplib::Server::HandlerResponse::Handled;
    }
    return httplib::Server::HandlerResponse::Unhandled;
  });

  auto asset = [](const std::string& name, httplib::Response& res) {
    const TWrenWebAsset* file = FindWebAsset(name);
    if (!file) {
      SendError(res, 404, "no file " + name);
      return;
    }
    res.set_content(std::string(file->Bytes()), WebContentType(name));
  };
  svr.Get("/", [this](const httplib::Request&, httplib::Response& res) {
    const TWrenWebAsset* file = FindWebAsset("index.html");
    if (!file) {
      SendError(res, 404, "no file index.html");
      return;
    }
    res.set_content(WithTokenLinks(std::string(file->Bytes()), token_), WebContentType("index.html"));
  });
  svr.Get(R"(/([A-Za-z0-9_.-]+\.(?:js|css|html|svg|png)))",
          [asset](const httplib::Request& req, httplib::Response& res) {
            asset(req.matches[1].str(), res);
          });

  TWrenEditorSession& s = session_;
  svr.Get("/api/project", Route([&s](const auto&) { return s.Project(); }));
  svr.Get("/api/actions", Route([&s](const auto&) { return s.Actions(); }));
  svr.Post("/api/steps", Route([&s](const auto& req) { return s.AddStep(BodyOf(req)); }));
  svr.Post(R"(/api/steps/(\d+)/(remove|duplicate|move|enabled|description|apply))",
           Route([&s](const httplib::Request& req) {
             const int i = Number(req, 1);
             const std::string what = req.matches[2].str();
             if (what == "remove") return s.RemoveStep(i);
             if (what == "duplicate") return s.DuplicateStep(i);
             if (what == "move") return s.MoveStep(i, BodyOf(req));
             if (what == "enabled") return s.SetEnabled(i, BodyOf(req));
             if (what == "description") return s.SetDescription(i, BodyOf(req));
             return s.Apply(i);
           }));
  svr.Put("/api/variables", Route([&s](const auto& req) { return s.SetVariables(BodyOf(req)); }));
  svr.Get(R"(/api/steps/(\d+)/pages)",
          Route([&s](const auto& req) { return s.OpenPages(Number(req, 1)); }));
  svr.Post(R"(/api/steps/(\d+)/pages/(\d+)/event)", Route([&s](const auto& req) {
             return s.PageEvent(Number(req, 1), Number(req, 2), BodyOf(req));
           }));
  svr.Post(R"(/api/steps/(\d+)/pages/(\d+)/check)", Route([&s](const auto& req) {
             return s.CheckPage(Number(req, 1), Number(req, 2));
           }));
  svr.Put(R"(/api/steps/(\d+)/properties/([^/]+))", Route([&s](const auto& req) {
            return s.SetProperty(Number(req, 1), req.matches[2].str(), BodyOf(req));
          }));
  svr.Get("/api/options", Route([&s](const auto&) { return s.Options(); }));
  svr.Post(R"(/api/options/(\d+)/pages/(\d+)/event)", Route([&s](const auto& req) {
             return s.OptionsEvent(Number(req, 1), Number(req, 2), BodyOf(req));
           }));
  svr.Post(R"(/api/options/(\d+)/apply)",
           Route([&s](const auto& req) { return s.ApplyOptions(Number(req, 1)); }));
  svr.Get("/api/fs", Route([&s](const auto& req) { return s.Folder(req.get_param_value("path")); }));
  svr.Post("/api/save", Route([&s](const auto& req) { return s.Save(BodyOf(req)); }));
  svr.Post("/api/run", Route([&s](const auto& req) { return s.Run(BodyOf(req)); }));
  svr.Post("/api/run/stop", Route([&s](const auto&) { return s.StopRun(); }));
  svr.Get("/api/run/events", [&s](const httplib::Request& req, httplib::Response& res) {
    // A stream that reconnects names the last event it got ("run.index") and goes on after it.
    struct TPosition {
      int run = 0;
      size_t next = 0;
    };
    auto position = std::make_shared<TPosition>();
    const std::string last = req.get_header_value("Last-Event-ID");
    if (const size_t dot = last.find('.'); dot != std::string::npos) {
      try {
        position->run = std::stoi(last.substr(0, dot));
        position->next = std::stoul(last.substr(dot + 1)) + 1;
      } catch (const std::exception&) {
        *position = {};
      }
    }
    res.set_chunked_content_provider(
        "text/event-stream", [&s, position](size_t, httplib::DataSink& sink) {
          TWrenEditorRun& run = s.Build();
          const TWrenEditorRun::TEvents events =
              run.Events(position->run, position->next, std::chrono::milliseconds(1000));
          if (run.ShuttingDown()) {
            sink.done();
            return true;
          }
          if (events.run != position->run) {
            position->run = events.run;
            position->next = 0;
          }
          std::string text;
          for (const std::string& line : events.lines)
            text += "id: " + std::to_string(position->run) + "." +
                    std::to_string(position->next++) + "\ndata: " + line + "\n\n";
          // A comment when there is nothing new: a closed connection shows up as a failed write.
          if (text.empty()) text = ":\n\n";
          return sink.write(text.data(), text.size());
        });
  });

  svr.set_error_handler([](const httplib::Request&, httplib::Response& res) {
    if (res.body.empty()) SendError(res, res.status, res.status == 404 ? "no such route" : "refused");
  });

  port_ = port == 0 ? svr.bind_to_any_port("127.0.0.1") : port;
  if (port != 0 && !svr.bind_to_port("127.0.0.1", port)) port_ = -1;
  if (port_ <= 0) {
    error = "cannot listen on 127.0.0.1" + (port ? ":" + std::to_string(port) : std::string());
    return false;
  }
  return true;
}

void TWrenEditorServer::Serve() { impl_->server.listen_after_bind(); }

void TWrenEditorServer::Stop() {
  session_.Build().Shutdown();
  impl_->server.stop();
}

}  // namespace wren
