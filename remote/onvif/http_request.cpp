#include "remote/onvif/http_request.h"

#include <algorithm>
#include <cctype>

namespace halvex::onvif {

namespace {

char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

// RFC 9110's token characters: what a method and a header name are made of.
bool isTokenChar(char c) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
        return true;
    }
    return std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isTokenChar);
}

// Whether a comma-separated header value holds `word` (any case).
bool listHolds(std::string_view value, std::string_view word) {
    while (!value.empty()) {
        const std::size_t comma = value.find(',');
        if (sameName(trimmed(value.substr(0, comma)), word)) {
            return true;
        }
        if (comma == std::string_view::npos) {
            break;
        }
        value.remove_prefix(comma + 1);
    }
    return false;
}

}  // namespace

std::optional<std::string_view> HttpRequest::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (sameName(key, name)) {
            return std::string_view(value);
        }
    }
    return std::nullopt;
}

bool HttpRequest::keepAlive() const {
    const auto connection = header("Connection");
    if (version == "HTTP/1.0") {
        return connection && listHolds(*connection, "keep-alive");
    }
    return !(connection && listHolds(*connection, "close"));
}

HttpRequestReader::State HttpRequestReader::fail(int status, std::string reason) {
    status_ = status;
    reason_ = std::move(reason);
    buffer_.clear();
    return State::Failed;
}

HttpRequestReader::State HttpRequestReader::next() {
    if (status_ != 0) {
        return State::Failed;
    }
    if (complete_) {
        return State::Complete;
    }
    if (!headersRead_) {
        // Empty lines before a request are allowed and skipped.
        const std::size_t start = buffer_.find_first_not_of("\r\n");
        buffer_.erase(0, std::min(start, buffer_.size()));
        const std::size_t end = buffer_.find("\r\n\r\n");
        if (end == std::string::npos) {
            if (buffer_.size() > maxHeaderBytes_) {
                return fail(431, "the request's headers are too long");
            }
            return State::NeedMore;
        }
        if (end + 4 > maxHeaderBytes_) {
            return fail(431, "the request's headers are too long");
        }
        if (const State read = readHeaders(end); read == State::Failed) {
            return read;
        }
    }
    if (buffer_.size() < bodyLength_) {
        return State::NeedMore;
    }
    request_.body = buffer_.substr(0, bodyLength_);
    buffer_.erase(0, bodyLength_);
    complete_ = true;
    return State::Complete;
}

HttpRequestReader::State HttpRequestReader::readHeaders(std::size_t end) {
    request_ = HttpRequest{};
    const std::string head = buffer_.substr(0, end + 2);
    buffer_.erase(0, end + 4);

    std::size_t lineEnd = head.find("\r\n");
    const std::string_view requestLine = std::string_view(head).substr(0, lineEnd);
    const std::size_t firstSpace = requestLine.find(' ');
    const std::size_t lastSpace = requestLine.rfind(' ');
    if (firstSpace == lastSpace) {  // no space at all, or only one
        return fail(400, "the request line is not method, target and version");
    }
    request_.method = requestLine.substr(0, firstSpace);
    request_.target = requestLine.substr(firstSpace + 1, lastSpace - firstSpace - 1);
    request_.version = requestLine.substr(lastSpace + 1);
    if (!isToken(request_.method) || request_.target.empty() ||
        request_.target.find(' ') != std::string::npos) {
        return fail(400, "the request line is not method, target and version");
    }
    if (request_.version != "HTTP/1.1" && request_.version != "HTTP/1.0") {
        if (request_.version.starts_with("HTTP/")) {
            return fail(505, "only HTTP/1.1 and 1.0 are answered");
        }
        return fail(400, "the request line is not method, target and version");
    }

    std::optional<std::size_t> length;
    while (lineEnd + 2 < head.size()) {
        const std::size_t lineStart = lineEnd + 2;
        lineEnd = head.find("\r\n", lineStart);
        const std::string_view line = std::string_view(head).substr(lineStart, lineEnd - lineStart);
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !isToken(line.substr(0, colon))) {
            return fail(400, "a header line is not a name and a value");
        }
        const std::string_view name = line.substr(0, colon);
        const std::string_view value = trimmed(line.substr(colon + 1));
        if (value.find_first_of(std::string_view("\0\r\n", 3)) != std::string_view::npos) {
            return fail(400, "a header line is not a name and a value");
        }
        if (sameName(name, "Content-Length")) {
            if (value.empty() || value.size() > 9 ||
                !std::all_of(value.begin(), value.end(),
                             [](char c) { return c >= '0' && c <= '9'; })) {
                return fail(400, "Content-Length is not a number");
            }
            const std::size_t parsed = std::stoul(std::string(value));
            if (length && *length != parsed) {
                return fail(400, "two different Content-Lengths");
            }
            length = parsed;
        }
        request_.headers.emplace_back(name, value);
    }
    if (request_.header("Transfer-Encoding")) {
        return fail(501, "only bodies with a Content-Length are read");
    }
    if (!length && request_.method == "POST") {
        return fail(411, "a POST needs a Content-Length");
    }
    bodyLength_ = length.value_or(0);
    if (bodyLength_ > maxBodyBytes_) {
        return fail(413, "the request's body is too long");
    }
    headersRead_ = true;
    const auto expect = request_.header("Expect");
    continueAsked_ = expect && sameName(*expect, "100-continue") && buffer_.size() < bodyLength_;
    return State::NeedMore;
}

HttpRequest HttpRequestReader::take() {
    HttpRequest request = std::move(request_);
    request_ = HttpRequest{};
    headersRead_ = false;
    continueAsked_ = false;
    complete_ = false;
    bodyLength_ = 0;
    return request;
}

bool HttpRequestReader::takeContinueRequest() {
    return std::exchange(continueAsked_, false);
}

std::string_view httpReasonPhrase(int status) {
    switch (status) {
        case 100:
            return "Continue";
        case 200:
            return "OK";
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 404:
            return "Not Found";
        case 405:
            return "Method Not Allowed";
        case 408:
            return "Request Timeout";
        case 411:
            return "Length Required";
        case 413:
            return "Content Too Large";
        case 415:
            return "Unsupported Media Type";
        case 431:
            return "Request Header Fields Too Large";
        case 500:
            return "Internal Server Error";
        case 501:
            return "Not Implemented";
        case 505:
            return "HTTP Version Not Supported";
        default:
            return "Error";
    }
}

}  // namespace halvex::onvif
