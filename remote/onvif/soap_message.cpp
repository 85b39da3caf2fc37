#include "remote/onvif/soap_message.h"

#include <QXmlStreamReader>

namespace halvex::onvif {

namespace {

// Past these a request is refused rather than read: no ONVIF request comes
// near them.
constexpr int kMaxDepth = 32;
constexpr int kMaxElements = 4096;

const QStringList kNamespacePrefixes = {
    QStringLiteral("env"), QStringLiteral("tds"), QStringLiteral("trt"), QStringLiteral("tptz"),
    QStringLiteral("tt"),  QStringLiteral("ter"), QStringLiteral("xs"),  QStringLiteral("wsa"),
    QStringLiteral("d"),   QStringLiteral("dn"),
};
const char* const kNamespaceUris[] = {ns::kEnvelope,
                                      ns::kDevice,
                                      ns::kMedia,
                                      ns::kPtz,
                                      ns::kSchema,
                                      ns::kError,
                                      "http://www.w3.org/2001/XMLSchema",
                                      ns::kAddressing,
                                      ns::kDiscovery,
                                      ns::kNetwork};

SoapFault wellFormedFault(const QString& why) {
    return senderFault({QStringLiteral("ter:WellFormed")}, why);
}

class TreeReader {
  public:
    explicit TreeReader(const QByteArray& xml) : reader_(xml) {}

    // Reads the element whose start the reader is at, with everything in it.
    std::optional<SoapFault> element(XmlElement& into, int depth) {
        if (depth > kMaxDepth || ++elements_ > kMaxElements) {
            return senderFault({QStringLiteral("ter:InvalidArgs")},
                               QStringLiteral("the request is nested too deep or too large"));
        }
        into.ns = reader_.namespaceUri().toString();
        into.name = reader_.name().toString();
        for (const QXmlStreamAttribute& attribute : reader_.attributes()) {
            into.attributes.emplace_back(attribute.name().toString(), attribute.value().toString());
        }
        while (!reader_.atEnd()) {
            switch (reader_.readNext()) {
                case QXmlStreamReader::StartElement: {
                    into.children.emplace_back();
                    if (auto fault = element(into.children.back(), depth + 1)) {
                        return fault;
                    }
                    break;
                }
                case QXmlStreamReader::Characters:
                    into.text += reader_.text();
                    break;
                case QXmlStreamReader::EndElement:
                    return std::nullopt;
                default:
                    break;
            }
        }
        return wellFormedFault(reader_.errorString());
    }

    QXmlStreamReader& reader() { return reader_; }

  private:
    QXmlStreamReader reader_;
    int elements_ = 0;
};

UsernameToken readToken(const XmlElement& token) {
    UsernameToken read;
    if (const XmlElement* user = token.child(ns::kSecurity, "Username")) {
        read.username = user->value();
    }
    if (const XmlElement* password = token.child(ns::kSecurity, "Password")) {
        read.password = password->value();
        read.passwordType = password->attribute("Type").value_or(QString());
    }
    if (const XmlElement* nonce = token.child(ns::kSecurity, "Nonce")) {
        read.nonce = nonce->value();
    }
    const XmlElement* created = token.child(ns::kSecurityUtility, "Created");
    if (created == nullptr) {
        created = token.child(ns::kSecurity, "Created");
    }
    if (created != nullptr) {
        read.created = created->value();
    }
    return read;
}

bool mustUnderstand(const XmlElement& block) {
    const auto flag = block.attribute("mustUnderstand");
    return flag &&
           (flag->trimmed() == QLatin1String("true") || flag->trimmed() == QLatin1String("1"));
}

// The header blocks the services take in: the security header and
// WS-Addressing's, whose content the answers do not depend on.
bool understood(const XmlElement& block) {
    return block.is(ns::kSecurity, "Security") || block.ns == QLatin1String(ns::kAddressing) ||
           block.ns == QLatin1String(ns::kAddressing2005);
}

}  // namespace

const XmlElement* XmlElement::child(const char* nameSpace, const char* localName) const {
    for (const XmlElement& element : children) {
        if (element.is(nameSpace, localName)) {
            return &element;
        }
    }
    return nullptr;
}

std::optional<QString> XmlElement::attribute(const char* localName) const {
    for (const auto& [key, value] : attributes) {
        if (key == QLatin1String(localName)) {
            return value;
        }
    }
    return std::nullopt;
}

int SoapFault::httpStatus() const {
    return code == QLatin1String("env:Sender") ? 400 : 500;
}

SoapFault senderFault(QStringList subcodes, QString reason) {
    return {QStringLiteral("env:Sender"), std::move(subcodes), std::move(reason)};
}

SoapFault receiverFault(QStringList subcodes, QString reason) {
    return {QStringLiteral("env:Receiver"), std::move(subcodes), std::move(reason)};
}

std::variant<SoapRequest, SoapFault> parseSoapRequest(const QByteArray& xml) {
    TreeReader tree(xml);
    QXmlStreamReader& reader = tree.reader();
    XmlElement envelope;
    bool found = false;
    while (!found && !reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                return wellFormedFault(QStringLiteral("a document type is not taken"));
            case QXmlStreamReader::StartElement:
                if (reader.name() == QLatin1String("Envelope") &&
                    reader.namespaceUri() != QLatin1String(ns::kEnvelope)) {
                    return SoapFault{QStringLiteral("env:VersionMismatch"),
                                     {},
                                     QStringLiteral("only SOAP 1.2 envelopes are answered")};
                }
                if (auto fault = tree.element(envelope, 0)) {
                    return *fault;
                }
                found = true;
                break;
            default:
                break;
        }
    }
    // Whatever follows the envelope must still be well-formed.
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            return wellFormedFault(QStringLiteral("more than one document element"));
        }
    }
    if (reader.hasError()) {
        return wellFormedFault(reader.errorString());
    }
    if (!found) {
        return wellFormedFault(QStringLiteral("no document element"));
    }
    if (!envelope.is(ns::kEnvelope, "Envelope")) {
        return senderFault({QStringLiteral("ter:InvalidArgs")},
                           QStringLiteral("the document is not a SOAP envelope"));
    }

    SoapRequest request;
    if (const XmlElement* header = envelope.child(ns::kEnvelope, "Header")) {
        for (const XmlElement& block : header->children) {
            if (!understood(block) && mustUnderstand(block)) {
                return SoapFault{
                    QStringLiteral("env:MustUnderstand"),
                    {},
                    QStringLiteral("header block %1 is not understood").arg(block.name)};
            }
            if (block.is(ns::kAddressing, "MessageID") ||
                block.is(ns::kAddressing2005, "MessageID")) {
                request.messageId = block.value();
            }
            if (block.is(ns::kSecurity, "Security")) {
                if (const XmlElement* token = block.child(ns::kSecurity, "UsernameToken")) {
                    request.token = readToken(*token);
                }
            }
        }
    }
    const XmlElement* body = envelope.child(ns::kEnvelope, "Body");
    if (body == nullptr || body->children.empty()) {
        return senderFault({QStringLiteral("ter:InvalidArgs")},
                           QStringLiteral("the envelope has no operation in its Body"));
    }
    request.body = body->children.front();
    return request;
}

SoapWriter::SoapWriter() {
    begin({});
}

SoapWriter::SoapWriter(const std::function<void(QXmlStreamWriter&)>& header) {
    begin(header);
}

void SoapWriter::begin(const std::function<void(QXmlStreamWriter&)>& header) {
    xml_.writeStartDocument();
    for (qsizetype i = 0; i < kNamespacePrefixes.size(); ++i) {
        xml_.writeNamespace(QLatin1String(kNamespaceUris[i]), kNamespacePrefixes[i]);
    }
    xml_.writeStartElement(QLatin1String(ns::kEnvelope), QStringLiteral("Envelope"));
    if (header) {
        xml_.writeStartElement(QLatin1String(ns::kEnvelope), QStringLiteral("Header"));
        header(xml_);
        xml_.writeEndElement();
    }
    xml_.writeStartElement(QLatin1String(ns::kEnvelope), QStringLiteral("Body"));
}

void SoapWriter::text(const char* nameSpace, const char* name, const QString& value) {
    xml_.writeTextElement(QLatin1String(nameSpace), QLatin1String(name), value);
}

QByteArray SoapWriter::finish() {
    xml_.writeEndDocument();
    return out_;
}

QByteArray faultEnvelope(const SoapFault& fault) {
    SoapWriter soap;
    QXmlStreamWriter& xml = soap.xml();
    const QLatin1String env(ns::kEnvelope);
    xml.writeStartElement(env, QStringLiteral("Fault"));
    xml.writeStartElement(env, QStringLiteral("Code"));
    xml.writeTextElement(env, QStringLiteral("Value"), fault.code);
    for (const QString& subcode : fault.subcodes) {
        xml.writeStartElement(env, QStringLiteral("Subcode"));
        xml.writeTextElement(env, QStringLiteral("Value"), subcode);
    }
    for (qsizetype i = 0; i < fault.subcodes.size(); ++i) {
        xml.writeEndElement();
    }
    xml.writeEndElement();  // Code
    xml.writeStartElement(env, QStringLiteral("Reason"));
    xml.writeStartElement(env, QStringLiteral("Text"));
    xml.writeAttribute(QStringLiteral("xml:lang"), QStringLiteral("en"));
    xml.writeCharacters(fault.reason);
    xml.writeEndElement();
    xml.writeEndElement();  // Reason
    xml.writeEndElement();  // Fault
    return soap.finish();
}

}  // namespace halvex::onvif
