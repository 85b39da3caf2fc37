#pragma once

// SOAP 1.2 envelopes as the ONVIF services read and answer them: a request's
// body element as a small tree, its WS-Security username token, and the
// faults that answer what cannot be done. Qt Core only (the XML stream
// reader and writer).

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QXmlStreamWriter>
#include <functional>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace halvex::onvif {

namespace ns {
inline constexpr auto kEnvelope = "http://www.w3.org/2003/05/soap-envelope";
inline constexpr auto kSoap11Envelope = "http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr auto kDevice = "http://www.onvif.org/ver10/device/wsdl";
inline constexpr auto kMedia = "http://www.onvif.org/ver10/media/wsdl";
inline constexpr auto kPtz = "http://www.onvif.org/ver20/ptz/wsdl";
inline constexpr auto kSchema = "http://www.onvif.org/ver10/schema";
inline constexpr auto kError = "http://www.onvif.org/ver10/error";
inline constexpr auto kSecurity =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd";
inline constexpr auto kSecurityUtility =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";
inline constexpr auto kAddressing = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
inline constexpr auto kAddressing2005 = "http://www.w3.org/2005/08/addressing";
inline constexpr auto kDiscovery = "http://schemas.xmlsoap.org/ws/2005/04/discovery";
inline constexpr auto kNetwork = "http://www.onvif.org/ver10/network/wsdl";
}  // namespace ns

// One element of a request: its qualified name, attributes (by local name),
// the text directly inside it and its child elements.
struct XmlElement {
    QString ns;
    QString name;
    std::vector<std::pair<QString, QString>> attributes;
    QString text;
    std::vector<XmlElement> children;

    bool is(const char* nameSpace, const char* localName) const {
        return name == QLatin1String(localName) && ns == QLatin1String(nameSpace);
    }
    // The first child of that name in that namespace.
    const XmlElement* child(const char* nameSpace, const char* localName) const;
    std::optional<QString> attribute(const char* localName) const;
    // The text trimmed of surrounding white space.
    QString value() const { return text.trimmed(); }
};

// The WS-Security UsernameToken of a request's header.
struct UsernameToken {
    QString username;
    QString password;
    QString passwordType;
    QString nonce;  // Base64, as sent
    QString created;
};

// A SOAP fault: its code (env:Sender, env:Receiver, env:VersionMismatch,
// env:MustUnderstand), the ONVIF subcodes from the outermost in, and the
// reason shown to the client.
struct SoapFault {
    QString code;
    QStringList subcodes;
    QString reason;

    // 400 for the client's fault, 500 for the rest, as SOAP over HTTP has it.
    int httpStatus() const;
    bool operator==(const SoapFault&) const = default;
};

SoapFault senderFault(QStringList subcodes, QString reason);
SoapFault receiverFault(QStringList subcodes, QString reason);

struct SoapRequest {
    std::optional<UsernameToken> token;
    // WS-Addressing's MessageID, which a WS-Discovery answer relates to.
    QString messageId;
    // The body's element: the operation and its arguments.
    XmlElement body;
};

// Reads an envelope. Not well-formed XML, a DTD, another SOAP version, a
// missing or empty Body, an unknown header block that must be understood and
// a tree past its depth or size are answered by the fault.
std::variant<SoapRequest, SoapFault> parseSoapRequest(const QByteArray& xml);

// An envelope being written: the namespaces the ONVIF answers use are
// declared on it, then the body's content goes to xml(), then finish().
class SoapWriter {
  public:
    SoapWriter();
    // With a header (WS-Addressing, as WS-Discovery answers carry).
    explicit SoapWriter(const std::function<void(QXmlStreamWriter&)>& header);

    QXmlStreamWriter& xml() { return xml_; }
    // <prefix:name>text</prefix:name> in namespace `nameSpace`.
    void text(const char* nameSpace, const char* name, const QString& value);
    QByteArray finish();

  private:
    void begin(const std::function<void(QXmlStreamWriter&)>& header);

    QByteArray out_;
    QXmlStreamWriter xml_{&out_};
};

QByteArray faultEnvelope(const SoapFault& fault);

}  // namespace halvex::onvif
