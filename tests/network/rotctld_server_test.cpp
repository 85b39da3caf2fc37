// The server on a real socket, driven by a raw TCP client. Hamlib's own
// rotctl drives it through the whole console in the window tests.

#include "network/rotctld_server.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QSignalSpy>
#include <memory>

#include "network/rotctl_protocol.h"
#include "tests/network/fake_rotator.h"
#include "tests/network/line_client.h"

namespace halvex::network {
namespace {

const QByteArray kPosition = "123.500000\n45.250000\n";

class RotctldServerTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0))
            << server.errorString().toStdString();
    }

    std::unique_ptr<LineClient> connected() {
        auto client = std::make_unique<LineClient>();
        const int before = server.clientCount();
        EXPECT_TRUE(client->connectTo(server.serverPort()));
        EXPECT_TRUE(LineClient::waitFor([&] { return server.clientCount() == before + 1; }));
        return client;
    }

    bool clientsDropTo(int count) {
        return LineClient::waitFor([&] { return server.clientCount() == count; });
    }

    FakeRotator rotator;
    RotctldServer server{rotator};
};

TEST_F(RotctldServerTest, AnswersEachLineInOrderHoweverItArrivesAndSignalsMoves) {
    QSignalSpy moves(&server, &RotctldServer::moveAccepted);
    auto client = connected();
    const QString peer = QStringLiteral("127.0.0.1:%1").arg(client->socket().localPort());
    client->exchange("p\nS\n_\n+P 90 45\np\n", kPosition +
                                                   "RPRT 0\nHalvex test unit\nset_pos: 90 45\n"
                                                   "RPRT 0\n90.000000\n45.000000\n");
    for (const char* piece : {"P 4", "5 1", "0\r", "\n"}) {
        client->send(piece);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(client->receive("RPRT 0\n"), "RPRT 0\n");
    const QByteArray garbage[] = {"xyz\n", QByteArray("\0\xff\x01\n", 4), "P north up\n",
                                  "P 45 85\n", "GET /index.html HTTP/1.1\r\n"};
    for (const QByteArray& line : garbage) {
        client->exchange(line, "RPRT -1\n");
    }
    client->exchange("\\set_pos 300.5 0\n", "RPRT 0\n");
    EXPECT_EQ(server.clientCount(), 1);
    EXPECT_EQ(rotator.stops, 1);
    ASSERT_EQ(moves.size(), 3);
    EXPECT_EQ(moves[0], (QList<QVariant>{90.0, 45.0, peer}));
    EXPECT_EQ(moves[1], (QList<QVariant>{45.0, 10.0, peer}));
    EXPECT_EQ(moves[2], (QList<QVariant>{300.5, 0.0, peer}));

    // Quit closes, and nothing after it is answered.
    client->send("+q\nS\n");
    EXPECT_TRUE(client->waitClosedByServer());
    EXPECT_EQ(client->take(), "");
    EXPECT_TRUE(clientsDropTo(0));
    EXPECT_EQ(rotator.stops, 1);
}

TEST_F(RotctldServerTest, ClientsComeAndGoWithoutMovingAnythingHalfSent) {
    QSignalSpy counts(&server, &RotctldServer::clientCountChanged);
    auto first = connected();
    auto second = connected();
    first->send("P 10 2");
    second->exchange("p\n", kPosition);
    first->exchange("0\np\n", "RPRT 0\n10.000000\n20.000000\n");
    second->exchange("+p\n", "get_pos:\nAzimuth: 10.000000\nElevation: 20.000000\nRPRT 0\n");
    first.reset();
    EXPECT_TRUE(clientsDropTo(1));
    second.reset();
    EXPECT_TRUE(clientsDropTo(0));
    QList<int> seen;
    for (const QList<QVariant>& signal : counts) {
        seen.append(signal.at(0).toInt());
    }
    EXPECT_EQ(seen, (QList<int>{1, 2, 1, 0}));

    rotator.moves.clear();
    for (const QByteArray& partial : {QByteArray("P 12 3"), QByteArray("p\nP 12 ")}) {
        auto client = connected();
        client->send(partial);
        QTest::qWait(50);  // let the partial line arrive first
        client->socket().abort();
        EXPECT_TRUE(clientsDropTo(0));
    }
    const QByteArray overlong[] = {QByteArray(kMaxRotctlLineLength + 1, 'p'), QByteArray(3000, 'x'),
                                   "P 10 10" + QByteArray(kMaxRotctlLineLength, ' ') + "\np\n"};
    for (const QByteArray& bytes : overlong) {
        SCOPED_TRACE(bytes.size());
        auto client = connected();
        client->send(bytes);
        EXPECT_TRUE(client->waitClosedByServer());
        EXPECT_EQ(client->take(), "RPRT -8\n");
        EXPECT_TRUE(clientsDropTo(0));
    }
    EXPECT_TRUE(rotator.moves.empty());

    // What socat and nc -N do once the request is sent: shut their side.
    auto client = connected();
    client->send("p\n_\n");
    ASSERT_EQ(::shutdown(static_cast<int>(client->socket().socketDescriptor()), SHUT_WR), 0);
    EXPECT_TRUE(client->waitClosedByServer());
    EXPECT_EQ(client->take(), "10.000000\n20.000000\nHalvex test unit\n");
    EXPECT_TRUE(clientsDropTo(0));
}

TEST_F(RotctldServerTest, ClientThatDoesNotReadStillGetsEveryAnswerInOrder) {
    // Far more answers than the server and both kernel buffers hold, so the
    // server has to stop reading and carry on as they drain.
    LineClient slowReader;
    slowReader.socket().setReadBufferSize(1024);
    slowReader.socket().setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
    ASSERT_TRUE(slowReader.connectTo(server.serverPort()));
    QByteArray requests;
    QByteArray expected;
    for (int i = 0; i < 20000; ++i) {
        requests += i % 2 ? "p\n" : "_\n";
        expected += i % 2 ? kPosition : QByteArray("Halvex test unit\n");
    }
    slowReader.send(requests);
    QTest::qWait(200);  // let the server fill the buffers
    const QByteArray answers = slowReader.receive(expected);
    EXPECT_EQ(answers.size(), expected.size());
    EXPECT_TRUE(answers == expected) << "answers out of order or garbled";
}

TEST_F(RotctldServerTest, ClosingOrDestroyingDropsEveryClient) {
    auto first = connected();
    auto doomed = std::make_unique<RotctldServer>(rotator);
    EXPECT_FALSE(doomed->listen(QHostAddress::LocalHost, server.serverPort())) << "port in use";
    ASSERT_TRUE(doomed->listen(QHostAddress::LocalHost, 0));
    LineClient other;
    ASSERT_TRUE(other.connectTo(doomed->serverPort()));
    ASSERT_TRUE(LineClient::waitFor([&] { return doomed->clientCount() == 1; }));
    doomed.reset();
    EXPECT_TRUE(other.waitClosedByServer());
    first->exchange("p\n", kPosition);
    server.close();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_FALSE(server.isListening());
    EXPECT_TRUE(first->waitClosedByServer());
}

}  // namespace
}  // namespace halvex::network
