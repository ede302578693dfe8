// The editor's local web server: one page and a JSON API on 127.0.0.1, for the holder of the
// session's token only.
#pragma once

#include <memory>
#include <string>

#include "cli/editor/WrenEditorSession.h"

namespace wren {

/// 32 lower-case hex characters from the system's random source.
std::string NewEditorToken();

/// Serves one session. Requests need the token, a Host naming this server and, when they carry
/// one, an Origin of this server: other web pages and rebound DNS names are refused.
class TWrenEditorServer {
 public:
  TWrenEditorServer(TWrenEditorSession& session, std::string token);
  ~TWrenEditorServer();
  TWrenEditorServer(const TWrenEditorServer&) = delete;
  TWrenEditorServer& operator=(const TWrenEditorServer&) = delete;

  /// Binds 127.0.0.1:port (0: any free port); false with error.
  bool Bind(int port, std::string& error);
  int Port() const { return port_; }
  /// The address to open: http://127.0.0.1:PORT/?token=TOKEN.
  std::string Url() const;
  /// Answers requests until Stop.
  void Serve();
  /// Ends Serve and every open event stream; safe from any thread.
  void Stop();

 private:
  struct TImpl;
  std::unique_ptr<TImpl> impl_;
  TWrenEditorSession& session_;
  std::string token_;
  int port_ = 0;
};

}  // namespace wren
