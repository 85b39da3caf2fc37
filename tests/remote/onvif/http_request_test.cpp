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
    const std::string head = "GET / HTTP/1.1\r\nX: ";  // with the limit below: 164 bytes
    const std::string post = "POST /a HTTP/1.1\r\n";
    using Read = std::vector<std::string>;
    const std::pair<std::string, Read> cases[] = {
        {kPost, {ok}},
        {kPost + "\r\n" + kPost, {ok, ok}},  // blank lines between
        {"POST /a HTTP/1.0\r\nContent-Length: 2\r\n\r\nhi", {"POST /a hi close"}},
        {"POST /a HTTP/1.0\r\nConnection: Keep-Alive\r\nContent-Length: 0\r\n\r\n",
         {"POST /a  keep"}},
        {"GET /a HTTP/1.1\r\nConnection: TE, close\r\n\r\n", {"GET /a  close"}},
        {post + "Content-Length: 2 \t \r\n\r\nhi", {"POST /a hi keep"}},
        {post + "Accept-Charset: utf-8\r\nContent-Length: 2\r\n\r\nhi", {"POST /a hi keep"}},
        {head + std::string(141, 'x') + "\r\n\r\n", {"GET /  keep"}},  // the most bytes
        {head + std::string(142, 'x') + "\r\n\r\n", {"431"}},
        {head + std::string(145, 'x'), {}},
        {head + std::string(146, 'x'), {"431"}},
        {post + "Content-Length:2\r\n\r\nhi", {"POST /a hi keep"}},
        {post + "Content-Length: 000000002\r\n\r\nhi", {"POST /a hi keep"}},
        {post + "Content-Length: 0000000002\r\n\r\nhi", {"400"}},
        {"POST / HTTP/1.1\r\nContent-Length: 1024\r\n\r\n", {}},
        {"GET / HTTP/1.1\r\nX\r\n\r\n", {"400"}},
        {"GET / HTTP/1.1\r\nX: a\rb\r\n\r\n", {"400"}},
        {"POST / HTTP/1.1\r\nContent-Length: 1025\r\n\r\n", {"413"}},
        {"POST / HTTP/1.1\r\n\r\n", {"411"}},
        {"POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n", {"501"}},
        {"POST / HTTP/1.1\r\nContent-Length: 1e3\r\n\r\n", {"400"}},
        {"POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n", {"400"}},
        {"POST / HTTP/1.1\r\nHost name: unit\r\n\r\n", {"400"}},
        {"PO/ST / HTTP/1.1\r\n\r\n", {"400"}},
        {"POST /\r\n\r\n", {"400"}},
        {"POST / FTP/1.1\r\n\r\n", {"400"}},
        {"POST / HTTP/2.0\r\n\r\n", {"505"}},
    };
    for (const auto& [input, read] : cases) {
        for (const std::size_t piece : {0, 1, 7}) {
            SCOPED_TRACE(::testing::Message() << input << " in pieces of " << piece);
            EXPECT_EQ(readAll(input, piece), read);
        }
    }
}

TEST(HttpRequestReader, TellsARequestUnderWayAndAClientWaitingToSendItsBody) {
    HttpRequestReader reader;
    reader.feed("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 3\r\n");
    EXPECT_EQ(reader.next(), State::NeedMore);
    EXPECT_FALSE(reader.takeContinueRequest());
    reader.feed("\r\n");
    EXPECT_EQ(reader.next(), State::NeedMore);
    EXPECT_TRUE(reader.takeContinueRequest());
    EXPECT_FALSE(reader.takeContinueRequest());
    // A whole request after the body came with its own: no need to ask for it.
    reader.feed("abcPOST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 1\r\n\r\nx");
    ASSERT_EQ(reader.next(), State::Complete);
    EXPECT_EQ(reader.next(), State::Complete);  // asked again before it is taken
    EXPECT_EQ(reader.take().body, "abc");
    ASSERT_EQ(reader.next(), State::Complete);
    EXPECT_FALSE(reader.takeContinueRequest());
    EXPECT_EQ(reader.take().body, "x");
}

}  // namespace
}  // namespace halvex::onvif
