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

// Feeds `input` in pieces of `piece` bytes (0: whole) and reads requests as
// they complete: "METHOD target body keep|close" each, then the status that
// ended the connection ("431"), if one did.
std::vector<std::string> readAll(const std::string& input, std::size_t piece = 0) {
    HttpRequestReader reader(164, 1024);
    std::vector<std::string> read;
    const std::size_t step = piece == 0 ? input.size() : piece;
    for (std::size_t at = 0; at < input.size(); at += step) {
        reader.feed(std::string_view(input).substr(at, step));
        State state;
        while ((state = reader.next()) == State::Complete) {
            const HttpRequest request = reader.take();
            read.push_back(request.method + " " + request.target + " " + request.body +
                           (request.keepAlive() ? " keep" : " close"));
        }
        if (state == State::Failed) {
            read.push_back(std::to_string(reader.status()));
            break;
        }
    }
    return read;
}

TEST(HttpRequestReader, ReadsRequestsInAnyPiecesAndRefusesWhatBreaksTheRules) {
    const std::string ok = "POST /onvif/ptz_service hello keep";
    const std::string longHeader = "POST / HTTP/1.1\r\nX: " + std::string(200, 'x');
    const std::string head = "GET / HTTP/1.1\r\nX: ";  // with the limit below: 164 bytes
    const struct {
        const char* name;
        std::string input;
        std::size_t piece;
        std::vector<std::string> read;
    } cases[] = {
        {"whole", kPost, 0, {ok}},
        {"a byte at a time", kPost, 1, {ok}},
        {"two in a row, blank lines between", kPost + "\r\n" + kPost, 7, {ok, ok}},
        {"body cut short", kPost.substr(0, kPost.size() - 2), 0, {}},
        {"HTTP/1.0 closes",
         "POST /a HTTP/1.0\r\nContent-Length: 2\r\n\r\nhi",
         0,
         {"POST /a hi close"}},
        {"HTTP/1.0 kept alive",
         "POST /a HTTP/1.0\r\nConnection: Keep-Alive\r\nContent-Length: 0\r\n\r\n",
         0,
         {"POST /a  keep"}},
        {"Connection: close",
         "GET /a HTTP/1.1\r\nConnection: TE, close\r\n\r\n",
         0,
         {"GET /a  close"}},
        {"Connection: keep-alive",
         "GET /a HTTP/1.1\r\nConnection: keep-alive\r\n\r\n",
         0,
         {"GET /a  keep"}},
        {"close after a comma alone",
         "GET /a HTTP/1.1\r\nConnection: TE,close\r\n\r\n",
         0,
         {"GET /a  close"}},
        {"blanks after a value",
         "POST /a HTTP/1.1\r\nContent-Length: 2 \t \r\n\r\nhi",
         0,
         {"POST /a hi keep"}},
        {"a header as long as Content-Length",
         "POST /a HTTP/1.1\r\nAccept-Charset: utf-8\r\nContent-Length: 2\r\n\r\nhi",
         0,
         {"POST /a hi keep"}},
        {"headers of the most bytes, ended",
         head + std::string(141, 'x') + "\r\n\r\n",
         0,
         {"GET /  keep"}},
        {"headers a byte too long, ended", head + std::string(142, 'x') + "\r\n\r\n", 0, {"431"}},
        {"headers of the most bytes, unended", head + std::string(145, 'x'), 0, {}},
        {"headers a byte too long, unended", head + std::string(146, 'x'), 0, {"431"}},
        {"no blank after a colon",
         "POST /a HTTP/1.1\r\nContent-Length:2\r\n\r\nhi",
         0,
         {"POST /a hi keep"}},
        {"a length of nine digits",
         "POST /a HTTP/1.1\r\nContent-Length: 000000002\r\n\r\nhi",
         0,
         {"POST /a hi keep"}},
        {"a length of ten digits",
         "POST /a HTTP/1.1\r\nContent-Length: 0000000002\r\n\r\nhi",
         0,
         {"400"}},
        {"a body of the most bytes, coming",
         "POST / HTTP/1.1\r\nContent-Length: 1024\r\n\r\n",
         0,
         {}},
        {"a header line of one byte", "GET / HTTP/1.1\r\nX\r\n\r\n", 0, {"400"}},
        {"a bare CR in a value", "GET / HTTP/1.1\r\nX: a\rb\r\n\r\n", 0, {"400"}},
        {"headers too long, unended", longHeader, 0, {"431"}},
        {"headers too long, ended", longHeader + "\r\n\r\n", 0, {"431"}},
        {"body too long", "POST / HTTP/1.1\r\nContent-Length: 1025\r\n\r\n", 0, {"413"}},
        {"POST without length", "POST / HTTP/1.1\r\n\r\n", 0, {"411"}},
        {"chunked", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n", 0, {"501"}},
        {"length not a number", "POST / HTTP/1.1\r\nContent-Length: 1e3\r\n\r\n", 0, {"400"}},
        {"negative length", "POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", 0, {"400"}},
        {"two lengths",
         "POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
         0,
         {"400"}},
        {"header with no colon", "POST / HTTP/1.1\r\nHost unit\r\n\r\n", 0, {"400"}},
        {"header name with a space", "POST / HTTP/1.1\r\nHost name: unit\r\n\r\n", 0, {"400"}},
        {"method with a slash", "PO/ST / HTTP/1.1\r\n\r\n", 0, {"400"}},
        {"folded header", "POST / HTTP/1.1\r\nHost: a\r\n b\r\n\r\n", 0, {"400"}},
        {"request line of two words", "POST /\r\n\r\n", 0, {"400"}},
        {"not HTTP", "POST / FTP/1.1\r\n\r\n", 0, {"400"}},
        {"HTTP/2", "POST / HTTP/2.0\r\n\r\n", 0, {"505"}},
        {"the request after a bad one is not read", "POST /\r\n\r\n" + kPost, 0, {"400"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(readAll(c.input, c.piece), c.read);
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
    // The body, and a whole request after it whose body came with it: no
    // need to ask for that one.
    reader.feed("abcPOST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 1\r\n\r\nx");
    ASSERT_EQ(reader.next(), State::Complete);
    EXPECT_EQ(reader.next(), State::Complete);  // asked again before it is taken
    const HttpRequest request = reader.take();
    EXPECT_EQ(request.header("expect"), "100-continue");
    EXPECT_EQ(request.body, "abc");
    EXPECT_FALSE(reader.takeContinueRequest());
    EXPECT_TRUE(reader.midRequest());
    ASSERT_EQ(reader.next(), State::Complete);
    EXPECT_FALSE(reader.takeContinueRequest());
    EXPECT_EQ(reader.take().body, "x");
    EXPECT_FALSE(reader.midRequest());
}

}  // namespace
}  // namespace halvex::onvif
