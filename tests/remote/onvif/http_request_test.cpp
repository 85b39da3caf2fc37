// The HTTP request reader: requests in whatever pieces they come, and the
// statuses that end a connection whose requests break the rules.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "remote/onvif/http_request.h"

namespace halvex::onvif {
namespace {

using State = HttpRequestReader::State;

const std::string kPost =
    "POST /onvif/ptz_service HTTP/1.1\r\nHost: unit\r\nContent-Length: 5\r\n\r\nhello";

struct Read {
    State state;
    int status = 0;
    // The requests read: "METHOD target body keep-alive".
    std::vector<std::string> requests;
};

// Feeds `input` in pieces of `piece` bytes (0: whole) and reads requests as
// they complete.
Read readAll(const std::string& input, std::size_t piece = 0, std::size_t maxHeader = 8192,
             std::size_t maxBody = 1024) {
    HttpRequestReader reader(maxHeader, maxBody);
    Read read{State::NeedMore, 0, {}};
    const std::size_t step = piece == 0 ? input.size() : piece;
    for (std::size_t at = 0; at < input.size(); at += step) {
        reader.feed(std::string_view(input).substr(at, step));
        while ((read.state = reader.next()) == State::Complete) {
            const HttpRequest request = reader.take();
            read.requests.push_back(request.method + " " + request.target + " " + request.body +
                                    (request.keepAlive() ? " keep" : " close"));
        }
        if (read.state == State::Failed) {
            read.status = reader.status();
            break;
        }
    }
    return read;
}

TEST(HttpRequestReader, ReadsRequestsInAnyPiecesAndRefusesWhatBreaksTheRules) {
    struct Case {
        const char* name;
        std::string input;
        std::size_t piece;
        State state;
        int status;
        std::vector<std::string> requests;
    };
    const std::string request10 = "POST /a HTTP/1.0\r\nContent-Length: 2\r\n\r\nhi";
    const std::vector<Case> cases = {
        {"whole", kPost, 0, State::NeedMore, 0, {"POST /onvif/ptz_service hello keep"}},
        {"a byte at a time", kPost, 1, State::NeedMore, 0, {"POST /onvif/ptz_service hello keep"}},
        {"two in a row, blank lines between",
         kPost + "\r\n" + kPost,
         7,
         State::NeedMore,
         0,
         {"POST /onvif/ptz_service hello keep", "POST /onvif/ptz_service hello keep"}},
        {"body cut short", kPost.substr(0, kPost.size() - 2), 0, State::NeedMore, 0, {}},
        {"HTTP/1.0 closes", request10, 0, State::NeedMore, 0, {"POST /a hi close"}},
        {"HTTP/1.0 kept alive",
         "POST /a HTTP/1.0\r\nConnection: Keep-Alive\r\nContent-Length: 0\r\n\r\n",
         0,
         State::NeedMore,
         0,
         {"POST /a  keep"}},
        {"Connection: close",
         "GET /a HTTP/1.1\r\nConnection: TE, close\r\n\r\n",
         0,
         State::NeedMore,
         0,
         {"GET /a  close"}},
        {"headers too long, unended",
         "POST / HTTP/1.1\r\nX: " + std::string(200, 'x'),
         0,
         State::Failed,
         431,
         {}},
        {"headers too long, ended",
         "POST / HTTP/1.1\r\nX: " + std::string(200, 'x') + "\r\n\r\n",
         0,
         State::Failed,
         431,
         {}},
        {"body too long",
         "POST / HTTP/1.1\r\nContent-Length: 1025\r\n\r\n",
         0,
         State::Failed,
         413,
         {}},
        {"POST without length", "POST / HTTP/1.1\r\n\r\n", 0, State::Failed, 411, {}},
        {"chunked",
         "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
         0,
         State::Failed,
         501,
         {}},
        {"length not a number",
         "POST / HTTP/1.1\r\nContent-Length: 1e3\r\n\r\n",
         0,
         State::Failed,
         400,
         {}},
        {"negative length",
         "POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
         0,
         State::Failed,
         400,
         {}},
        {"two lengths",
         "POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
         0,
         State::Failed,
         400,
         {}},
        {"header with no colon", "POST / HTTP/1.1\r\nHost unit\r\n\r\n", 0, State::Failed, 400, {}},
        {"folded header", "POST / HTTP/1.1\r\nHost: a\r\n b\r\n\r\n", 0, State::Failed, 400, {}},
        {"request line of two words", "POST /\r\n\r\n", 0, State::Failed, 400, {}},
        {"not HTTP", "POST / FTP/1.1\r\n\r\n", 0, State::Failed, 400, {}},
        {"HTTP/2", "POST / HTTP/2.0\r\n\r\n", 0, State::Failed, 505, {}},
        {"the request after a bad one is not read",
         "POST /\r\n\r\n" + kPost,
         0,
         State::Failed,
         400,
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Read read = readAll(c.input, c.piece, 100 + 64);
        EXPECT_EQ(read.state, c.state);
        EXPECT_EQ(read.status, c.status);
        EXPECT_EQ(read.requests, c.requests);
    }
}

TEST(HttpRequestReader, TellsARequestUnderWayAndAClientWaitingToSendItsBody) {
    HttpRequestReader reader;
    EXPECT_FALSE(reader.midRequest());
    reader.feed("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 3\r\n");
    EXPECT_EQ(reader.next(), State::NeedMore);
    EXPECT_TRUE(reader.midRequest());
    EXPECT_FALSE(reader.takeContinueRequest());
    reader.feed("\r\n");
    EXPECT_EQ(reader.next(), State::NeedMore);
    EXPECT_TRUE(reader.takeContinueRequest());
    EXPECT_FALSE(reader.takeContinueRequest());
    reader.feed("abc");
    ASSERT_EQ(reader.next(), State::Complete);
    const HttpRequest request = reader.take();
    EXPECT_EQ(request.header("expect"), "100-continue");
    EXPECT_EQ(request.body, "abc");
    EXPECT_FALSE(reader.midRequest());
}

}  // namespace
}  // namespace halvex::onvif
