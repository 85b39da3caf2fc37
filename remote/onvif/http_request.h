#pragma once

// HTTP/1.1 requests as the ONVIF server reads them from a connection: the
// request line, the headers and a body of Content-Length bytes. No Qt: the
// fuzz target and the tests feed it bytes directly.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvex::onvif {

struct HttpRequest {
    std::string method;
    std::string target;
    // "HTTP/1.1" or "HTTP/1.0".
    std::string version;
    // Names as sent; look them up with header().
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    // The first header of that name (any case), trimmed.
    std::optional<std::string_view> header(std::string_view name) const;
    // HTTP/1.1 unless "Connection: close"; HTTP/1.0 only with
    // "Connection: keep-alive".
    bool keepAlive() const;
};

// Reads requests one after another from the bytes of one connection, in
// whatever pieces they come. A request cut short waits for the rest; one
// that breaks the rules ends the connection with the status given.
class HttpRequestReader {
  public:
    static constexpr std::size_t kDefaultMaxHeaderBytes = 8 * 1024;
    static constexpr std::size_t kDefaultMaxBodyBytes = 256 * 1024;

    enum class State { NeedMore, Complete, Failed };

    explicit HttpRequestReader(std::size_t maxHeaderBytes = kDefaultMaxHeaderBytes,
                               std::size_t maxBodyBytes = kDefaultMaxBodyBytes)
        : maxHeaderBytes_(maxHeaderBytes), maxBodyBytes_(maxBodyBytes) {}

    // Adds what came from the connection.
    void feed(std::string_view bytes) { buffer_.append(bytes); }
    // Complete: take() gives the request and reading goes on after it.
    // Failed: status() and reason() say why; nothing more is read.
    State next();
    HttpRequest take();

    // Once the headers of the request under way have been read: whether
    // the client waits for "100 Continue" before it sends the body (asked
    // once per request).
    bool takeContinueRequest();

    int status() const { return status_; }
    const std::string& reason() const { return reason_; }
    // Bytes held that belong to a request not yet complete.
    bool midRequest() const { return !buffer_.empty() || headersRead_; }

  private:
    State fail(int status, std::string reason);
    State readHeaders(std::size_t end);

    std::size_t maxHeaderBytes_;
    std::size_t maxBodyBytes_;
    std::string buffer_;
    HttpRequest request_;
    bool headersRead_ = false;
    bool continueAsked_ = false;
    std::size_t bodyLength_ = 0;
    bool complete_ = false;
    int status_ = 0;
    std::string reason_;
};

// "Bad Request" for 400, and so on for the statuses the server sends.
std::string_view httpReasonPhrase(int status);

}  // namespace halvex::onvif
