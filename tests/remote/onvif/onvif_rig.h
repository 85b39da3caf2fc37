#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QHostAddress>
#include <QTcpSocket>
#include <QUuid>

#include "remote/onvif/onvif_server.h"
#include "remote/onvif/onvif_services.h"
#include "remote/onvif/ptz_spaces.h"
#include "remote/onvif/soap_message.h"
#include "remote/onvif/username_token.h"
#include "tests/session/session_rig.h"

// Strings in failures as text.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace halvex::testing {

// A raw HTTP client on 127.0.0.1; every wait runs the event loop, where the
// server and the session live.
class HttpClient {
  public:
    bool connectTo(quint16 port) {
        socket.connectToHost(QHostAddress::LocalHost, port);
        return runUntil([&] { return socket.state() == QAbstractSocket::ConnectedState; }, 5000);
    }
    // Waits for one whole response (headers and Content-Length body); what
    // follows it stays in `received`. Empty when none comes in time.
    QByteArray response(int timeoutMs = 5000) {
        QByteArray whole;
        runUntil(
            [&] {
                received += socket.readAll();
                const qsizetype end = received.indexOf("\r\n\r\n");
                if (end < 0) {
                    return false;
                }
                const QByteArray head = received.left(end).toLower();
                const qsizetype at = head.indexOf("content-length:");
                const qsizetype length =
                    at < 0 ? 0 : head.mid(at + 15).split('\r').first().trimmed().toLongLong();
                if (received.size() < end + 4 + length) {
                    return false;
                }
                whole = received.left(end + 4 + length);
                received.remove(0, whole.size());
                return true;
            },
            timeoutMs);
        return whole;
    }
    bool waitClosedByServer() {
        return runUntil(
            [&] {
                received += socket.readAll();
                return socket.state() == QAbstractSocket::UnconnectedState;
            },
            5000);
    }

    QTcpSocket socket;
    QByteArray received;
};

// The status of an HTTP response, and its body.
inline int statusOf(const QByteArray& response) {
    return response.mid(9, 3).toInt();
}
inline QByteArray bodyOf(const QByteArray& response) {
    return response.mid(response.indexOf("\r\n\r\n") + 4);
}

// The code and subcodes of a fault envelope ("env:Sender ter:InvalidArgVal
// ter:NoProfile"), or the name of the body's element when it is no fault.
inline QString faultOf(const QByteArray& envelope) {
    const auto parsed = onvif::parseSoapRequest(envelope);
    const auto* reply = std::get_if<onvif::SoapRequest>(&parsed);
    if (reply == nullptr) {
        return QStringLiteral("unreadable");
    }
    if (!reply->body.is(onvif::ns::kEnvelope, "Fault")) {
        return reply->body.name;
    }
    QStringList codes;
    const onvif::XmlElement* code = reply->body.child(onvif::ns::kEnvelope, "Code");
    while (code != nullptr) {
        if (const auto* value = code->child(onvif::ns::kEnvelope, "Value")) {
            codes << value->value();
        }
        code = code->child(onvif::ns::kEnvelope, "Subcode");
    }
    return codes.join(QLatin1Char(' '));
}

// The ONVIF server on a free port of 127.0.0.1 over the session and the
// virtual unit, requests signed as a client signs them.
inline constexpr auto kUser = "operator";
inline constexpr auto kPassword = "pan&tilt";

class OnvifTest : public SessionTest {
  protected:
    OnvifTest() {
        server.setCredentials(QLatin1String(kUser), QLatin1String(kPassword));
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost, 0))
            << server.errorString().toStdString();
    }

    // A UsernameToken header with a fresh nonce, signed as a client signs it.
    static QString security() {
        const QString nonceText = QString::fromLatin1(QUuid::createUuid().toRfc4122().toBase64());
        const QString createdText = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
        return QStringLiteral(
                   "<s:Header><wsse:Security xmlns:wsse=\"%1\" xmlns:wsu=\"%2\">"
                   "<wsse:UsernameToken><wsse:Username>%3</wsse:Username>"
                   "<wsse:Password Type=\"http://docs.oasis-open.org/wss/2004/01/"
                   "oasis-200401-wss-username-token-profile-1.0#PasswordDigest\">%4</wsse:Password>"
                   "<wsse:Nonce>%5</wsse:Nonce><wsu:Created>%6</wsu:Created>"
                   "</wsse:UsernameToken></wsse:Security></s:Header>")
            .arg(
                QLatin1String(onvif::ns::kSecurity), QLatin1String(onvif::ns::kSecurityUtility),
                QLatin1String(kUser),
                onvif::UsernameTokenCheck::digest(nonceText, createdText, QLatin1String(kPassword)),
                nonceText, createdText);
    }

    // An envelope whose body is `body`, the ONVIF prefixes declared
    // (tds, trt, tptz, tt), with `header` (a signed one unless told).
    static QByteArray envelope(const QString& body, const QString& header = security()) {
        return QStringLiteral(
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                   "<s:Envelope xmlns:s=\"%1\" xmlns:tds=\"%2\" xmlns:trt=\"%3\" xmlns:tptz=\"%4\" "
                   "xmlns:tt=\"%5\">%6<s:Body>%7</s:Body></s:Envelope>")
            .arg(QLatin1String(onvif::ns::kEnvelope), QLatin1String(onvif::ns::kDevice),
                 QLatin1String(onvif::ns::kMedia), QLatin1String(onvif::ns::kPtz),
                 QLatin1String(onvif::ns::kSchema), header, body)
            .toUtf8();
    }

    static QByteArray httpPost(const QByteArray& body, const char* path = "/onvif/ptz_service") {
        return "POST " + QByteArray(path) +
               " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/soap+xml\r\n"
               "Content-Length: " +
               QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    // Posts an envelope on a connection of its own; the whole response.
    QByteArray post(const QByteArray& body, const char* path = "/onvif/ptz_service") {
        HttpClient client;
        EXPECT_TRUE(client.connectTo(server.serverPort()));
        client.socket.write(httpPost(body, path));
        return client.response();
    }
    // The fault (or response element) that a signed request for `body` gets.
    QString ask(const QString& body) { return faultOf(bodyOf(post(envelope(body)))); }
    // The commands that reach the line within a moment of `mark`.
    Messages commandsAfter(std::size_t mark) {
        runUntil([&] { return !commandsSince(mark).empty(); }, 3000);
        return commandsSince(mark);
    }

    OnvifServer server{session};
};

}  // namespace halvex::testing
