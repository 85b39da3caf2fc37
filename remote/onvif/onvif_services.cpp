#include "remote/onvif/onvif_services.h"

#include <QTimeZone>
#include <algorithm>
#include <array>
#include <cmath>

#include "protocol/fault_guard.h"
#include "protocol/vocabulary.h"
#include "remote/onvif/ptz_spaces.h"
#include "session/session.h"

namespace halvex::onvif {

namespace {

constexpr auto kDevicePath = "/onvif/device_service";
constexpr auto kMediaPath = "/onvif/media_service";
constexpr auto kPtzPath = "/onvif/ptz_service";
constexpr auto kNodeToken = "unit";

// The unit takes angles in hundredths of a degree.
double toHundredths(double angle) {
    return std::round(angle * 100.0) / 100.0;
}

QString number(double value) {
    return QString::number(value, 'g', 8);
}

QString profileToken(int index) {
    return QStringLiteral("profile%1").arg(index + 1);
}
// The cameras as video sources: their picture goes its own way, not
// through the console, so they come with no stream.
QString sourceToken(int index) {
    return QStringLiteral("camera%1").arg(index + 1);
}
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
QString ptzToken(int index) {
    return QStringLiteral("ptz%1").arg(index + 1);
}

SoapFault invalidArg(const char* subcode, const QString& reason) {
    return senderFault(
        {QStringLiteral("ter:InvalidArgVal"), QStringLiteral("ter:") + QLatin1String(subcode)},
        reason);
}

SoapFault missing(const char* element) {
    return senderFault({QStringLiteral("ter:InvalidArgs")},
                       QStringLiteral("the request has no %1").arg(QLatin1String(element)));
}

// How a refused move is answered. Outside the soft limits it is the client's
// value that is wrong (`outside` names which); otherwise the unit cannot act
// now.
SoapFault refusalFault(Refusal refusal, const char* outside = "InvalidPosition") {
    switch (refusal) {
        case Refusal::OutsideLimits:
            return invalidArg(outside, describe(refusal));
        case Refusal::Offline:
            return receiverFault({QStringLiteral("ter:Action"), QStringLiteral("ter:NoStatus")},
                                 describe(refusal));
        case Refusal::PagesLocked:
        case Refusal::OperatorJogging:
        case Refusal::UnitBusy:
            break;
    }
    return receiverFault({QStringLiteral("ter:Action")}, describe(refusal));
}

// A number in an attribute; a fault for one that is missing or not a number.
double numberAttribute(const XmlElement& element, const char* name) {
    bool ok = false;
    const double value = element.attribute(name).value_or(QString()).trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        throw senderFault(
            {QStringLiteral("ter:InvalidArgVal")},
            QStringLiteral("%1 needs a number in %2").arg(element.name, QLatin1String(name)));
    }
    return value;
}

void writeRange(QXmlStreamWriter& xml, const char* axis, double min, double max) {
    xml.writeStartElement(QLatin1String(ns::kSchema), QLatin1String(axis));
    xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("Min"), number(min));
    xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("Max"), number(max));
    xml.writeEndElement();
}

void writeSpace(QXmlStreamWriter& xml, const char* element, const char* uri, double xMin,
                double xMax, std::optional<std::pair<double, double>> y = std::nullopt) {
    xml.writeStartElement(QLatin1String(ns::kSchema), QLatin1String(element));
    xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("URI"), QLatin1String(uri));
    writeRange(xml, "XRange", xMin, xMax);
    if (y) {
        writeRange(xml, "YRange", y->first, y->second);
    }
    xml.writeEndElement();
}

void writeVector(QXmlStreamWriter& xml, const char* element, double x, std::optional<double> y,
                 const char* space) {
    xml.writeEmptyElement(QLatin1String(ns::kSchema), QLatin1String(element));
    xml.writeAttribute(QStringLiteral("x"), number(x));
    if (y) {
        xml.writeAttribute(QStringLiteral("y"), number(*y));
    }
    xml.writeAttribute(QStringLiteral("space"), QLatin1String(space));
}

void writeDateTime(QXmlStreamWriter& xml, const char* element, const QDateTime& at) {
    const QLatin1String tt(ns::kSchema);
    xml.writeStartElement(tt, QLatin1String(element));
    xml.writeStartElement(tt, QStringLiteral("Time"));
    xml.writeTextElement(tt, QStringLiteral("Hour"), QString::number(at.time().hour()));
    xml.writeTextElement(tt, QStringLiteral("Minute"), QString::number(at.time().minute()));
    xml.writeTextElement(tt, QStringLiteral("Second"), QString::number(at.time().second()));
    xml.writeEndElement();
    xml.writeStartElement(tt, QStringLiteral("Date"));
    xml.writeTextElement(tt, QStringLiteral("Year"), QString::number(at.date().year()));
    xml.writeTextElement(tt, QStringLiteral("Month"), QString::number(at.date().month()));
    xml.writeTextElement(tt, QStringLiteral("Day"), QString::number(at.date().day()));
    xml.writeEndElement();
    xml.writeEndElement();
}

// The preset that a token names: "0".."30", spelt as the number's own
// text (which also refuses anything that is no number at all).
std::optional<int> presetFromToken(const QString& token) {
    const QString text = token.trimmed();
    const int preset = text.toInt();
    if (preset < 0 || preset >= OnvifServices::kPresets || QString::number(preset) != text) {
        return std::nullopt;
    }
    return preset;
}

}  // namespace

struct OnvifServices::Context {
    const XmlElement& request;
    QString address;
    SoapWriter soap;

    QXmlStreamWriter& xml() { return soap.xml(); }
    const XmlElement& required(const char* name) const {
        const XmlElement* element = request.child(request.ns.toLatin1().constData(), name);
        if (element == nullptr) {
            throw missing(name);
        }
        return *element;
    }
    const XmlElement* optional(const char* name) const {
        return request.child(request.ns.toLatin1().constData(), name);
    }
    // The response element, in the request's namespace, left open.
    void respond() {
        xml().writeStartElement(request.ns, request.name + QStringLiteral("Response"));
    }
    QString url(const char* path) const { return address + QLatin1String(path); }
};

OnvifServices::OnvifServices(Session& session, QObject* parent)
    : QObject(parent),
      session_(session),
      jog_(session, JogSource::Onvif, kContinuousMoveMs),
      clock_([] { return QDateTime::currentDateTimeUtc(); }) {
    connect(&jog_, &RemoteJog::timedOut, this, [this] { demand_ = {}; });
}

void OnvifServices::setCredentials(const QString& user, const QString& password) {
    user_ = user;
    password_ = password;
}

OnvifReply OnvifServices::handle(const QByteArray& envelope, const QString& address) {
    auto parsed = parseSoapRequest(envelope);
    if (const auto* fault = std::get_if<SoapFault>(&parsed)) {
        return {fault->httpStatus(), faultEnvelope(*fault), {}};
    }
    return answer(std::get<SoapRequest>(parsed), address);
}

OnvifReply OnvifServices::answer(const SoapRequest& request, const QString& address) {
    struct Operation {
        const char* nameSpace;
        const char* name;
        void (OnvifServices::*handler)(Context&);
    };
    static const std::array kOperations = {
        Operation{ns::kDevice, "GetDeviceInformation", &OnvifServices::deviceInformation},
        Operation{ns::kDevice, "GetCapabilities", &OnvifServices::capabilities},
        Operation{ns::kDevice, "GetServices", &OnvifServices::services},
        Operation{ns::kDevice, "GetSystemDateAndTime", &OnvifServices::systemDateAndTime},
        Operation{ns::kDevice, "GetScopes", &OnvifServices::scopes},
        Operation{ns::kMedia, "GetProfiles", &OnvifServices::profiles},
        Operation{ns::kMedia, "GetProfile", &OnvifServices::profile},
        Operation{ns::kMedia, "GetVideoSources", &OnvifServices::videoSources},
        Operation{ns::kMedia, "GetStreamUri", &OnvifServices::mediaUri},
        Operation{ns::kMedia, "GetSnapshotUri", &OnvifServices::mediaUri},
        Operation{ns::kPtz, "GetNodes", &OnvifServices::nodes},
        Operation{ns::kPtz, "GetNode", &OnvifServices::node},
        Operation{ns::kPtz, "GetConfigurations", &OnvifServices::configurations},
        Operation{ns::kPtz, "GetConfiguration", &OnvifServices::configuration},
        Operation{ns::kPtz, "GetConfigurationOptions", &OnvifServices::configurationOptions},
        Operation{ns::kPtz, "GetStatus", &OnvifServices::status},
        Operation{ns::kPtz, "AbsoluteMove", &OnvifServices::absoluteMove},
        Operation{ns::kPtz, "RelativeMove", &OnvifServices::relativeMove},
        Operation{ns::kPtz, "ContinuousMove", &OnvifServices::continuousMove},
        Operation{ns::kPtz, "Stop", &OnvifServices::stopMove},
        Operation{ns::kPtz, "GetPresets", &OnvifServices::presets},
        Operation{ns::kPtz, "GotoPreset", &OnvifServices::gotoPreset},
        Operation{ns::kPtz, "SetPreset", &OnvifServices::setPreset},
        Operation{ns::kPtz, "RemovePreset", &OnvifServices::removePreset},
        Operation{ns::kPtz, "GotoHomePosition", &OnvifServices::gotoHome},
    };
    const XmlElement& body = request.body;
    const QString operation = body.name;
    const auto fail = [&operation](const SoapFault& fault) {
        return OnvifReply{fault.httpStatus(), faultEnvelope(fault), operation};
    };
    const Operation* found = nullptr;
    for (const Operation& candidate : kOperations) {
        if (body.is(candidate.nameSpace, candidate.name)) {
            found = &candidate;
        }
    }
    if (found == nullptr) {
        return fail(
            receiverFault({QStringLiteral("ter:ActionNotSupported")},
                          QStringLiteral("%1 in %2 is not offered").arg(body.name, body.ns)));
    }
    // Clients ask for the time first, to sign their later requests with it.
    const bool open = anonymousAllowed_ || body.is(ns::kDevice, "GetSystemDateAndTime");
    if (!open) {
        const auto verdict = tokens_.check(request.token, user_, password_, clock_());
        if (verdict != UsernameTokenCheck::Verdict::Accepted) {
            return fail(senderFault({QStringLiteral("ter:NotAuthorized")}, describe(verdict)));
        }
    }
    Context context{body, address, {}};
    try {
        (this->*found->handler)(context);
    } catch (const SoapFault& fault) {
        return fail(fault);
    }
    return {200, context.soap.finish(), operation};
}

// ---- Device ---------------------------------------------------------------

void OnvifServices::deviceInformation(Context& c) {
    const FirmwareRevision& firmware = session_.status().Firmware;
    c.respond();
    c.soap.text(ns::kDevice, "Manufacturer", QStringLiteral("Halvex"));
    c.soap.text(ns::kDevice, "Model", QStringLiteral("Pan & tilt unit console"));
    c.soap.text(ns::kDevice, "FirmwareVersion",
                QStringLiteral("%1.%2").arg(firmware.major).arg(firmware.minor));
    c.soap.text(ns::kDevice, "SerialNumber",
                QStringLiteral("unit-%1").arg(session_.status().UnitAddress));
    c.soap.text(ns::kDevice, "HardwareId", QStringLiteral("halvex-console"));
    c.xml().writeEndElement();
}

void OnvifServices::capabilities(Context& c) {
    bool device = false;
    bool media = false;
    bool ptz = false;
    for (const XmlElement& category : c.request.children) {
        if (!category.is(ns::kDevice, "Category")) {
            continue;
        }
        const QString name = category.value();
        const bool all = name == QLatin1String("All");
        device = device || all || name == QLatin1String("Device");
        media = media || all || name == QLatin1String("Media");
        ptz = ptz || all || name == QLatin1String("PTZ");
        if (!all && name != QLatin1String("Device") && name != QLatin1String("Media") &&
            name != QLatin1String("PTZ")) {
            throw receiverFault(
                {QStringLiteral("ter:ActionNotSupported"), QStringLiteral("ter:NoSuchService")},
                QStringLiteral("the device has no %1 service").arg(name));
        }
    }
    if (!device && !media && !ptz) {
        device = media = ptz = true;
    }
    const QLatin1String tt(ns::kSchema);
    QXmlStreamWriter& xml = c.xml();
    c.respond();
    xml.writeStartElement(QLatin1String(ns::kDevice), QStringLiteral("Capabilities"));
    if (device) {
        xml.writeStartElement(tt, QStringLiteral("Device"));
        xml.writeTextElement(tt, QStringLiteral("XAddr"), c.url(kDevicePath));
        xml.writeEndElement();
    }
    if (media) {
        xml.writeStartElement(tt, QStringLiteral("Media"));
        xml.writeTextElement(tt, QStringLiteral("XAddr"), c.url(kMediaPath));
        xml.writeStartElement(tt, QStringLiteral("StreamingCapabilities"));
        for (const char* name : {"RTPMulticast", "RTP_TCP", "RTP_RTSP_TCP"}) {
            xml.writeTextElement(tt, QLatin1String(name), QStringLiteral("false"));
        }
        xml.writeEndElement();
        xml.writeEndElement();
    }
    if (ptz) {
        xml.writeStartElement(tt, QStringLiteral("PTZ"));
        xml.writeTextElement(tt, QStringLiteral("XAddr"), c.url(kPtzPath));
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndElement();
}

void OnvifServices::services(Context& c) {
    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tds(ns::kDevice);
    c.respond();
    const std::array<std::pair<const char*, const char*>, 3> offered = {
        std::pair{ns::kDevice, kDevicePath}, std::pair{ns::kMedia, kMediaPath},
        std::pair{ns::kPtz, kPtzPath}};
    for (const auto& [nameSpace, path] : offered) {
        xml.writeStartElement(tds, QStringLiteral("Service"));
        xml.writeTextElement(tds, QStringLiteral("Namespace"), QLatin1String(nameSpace));
        xml.writeTextElement(tds, QStringLiteral("XAddr"), c.url(path));
        xml.writeStartElement(tds, QStringLiteral("Version"));
        xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("Major"),
                             QStringLiteral("2"));
        xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("Minor"),
                             QStringLiteral("0"));
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

void OnvifServices::systemDateAndTime(Context& c) {
    const QDateTime now = clock_().toUTC();
    const QLatin1String tt(ns::kSchema);
    QXmlStreamWriter& xml = c.xml();
    c.respond();
    xml.writeStartElement(QLatin1String(ns::kDevice), QStringLiteral("SystemDateAndTime"));
    xml.writeTextElement(tt, QStringLiteral("DateTimeType"), QStringLiteral("Manual"));
    xml.writeTextElement(tt, QStringLiteral("DaylightSavings"), QStringLiteral("false"));
    xml.writeStartElement(tt, QStringLiteral("TimeZone"));
    xml.writeTextElement(tt, QStringLiteral("TZ"), QStringLiteral("UTC0"));
    xml.writeEndElement();
    writeDateTime(xml, "UTCDateTime", now);
    writeDateTime(xml, "LocalDateTime", now);
    xml.writeEndElement();
    xml.writeEndElement();
}

void OnvifServices::scopes(Context& c) {
    QXmlStreamWriter& xml = c.xml();
    c.respond();
    for (const char* scope :
         {"onvif://www.onvif.org/type/ptz", "onvif://www.onvif.org/type/video_transmitter",
          "onvif://www.onvif.org/Profile/Streaming", "onvif://www.onvif.org/name/Halvex",
          "onvif://www.onvif.org/hardware/pan_tilt_unit"}) {
        xml.writeStartElement(QLatin1String(ns::kDevice), QStringLiteral("Scopes"));
        xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("ScopeDef"),
                             QStringLiteral("Fixed"));
        xml.writeTextElement(QLatin1String(ns::kSchema), QStringLiteral("ScopeItem"),
                             QLatin1String(scope));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

// ---- Media ----------------------------------------------------------------

namespace {

// The lenses where the unit last reported them, but for `lens` at `position`:
// a move with the lenses moves all four.
std::array<int, 4> lensesWith(const UnitStatus& s, std::size_t lens, int position) {
    std::array<int, 4> lenses{};
    std::copy(s.Lens.begin(), s.Lens.end(), lenses.begin());
    lenses.at(lens) = position;
    return lenses;
}

int profileIndex(const QString& token) {
    for (int i = 0; i < OnvifServices::kProfiles; ++i) {
        if (token.trimmed() == profileToken(i)) {
            return i;
        }
    }
    throw invalidArg("NoProfile", QStringLiteral("no profile %1").arg(token));
}

void writePtzConfiguration(QXmlStreamWriter& xml, const QString& element, int index) {
    const QLatin1String tt(ns::kSchema);
    xml.writeStartElement(element.startsWith(QLatin1String("tt:")) ? tt : QLatin1String(ns::kPtz),
                          element.mid(element.indexOf(QLatin1Char(':')) + 1));
    xml.writeAttribute(QStringLiteral("token"), ptzToken(index));
    xml.writeTextElement(tt, QStringLiteral("Name"),
                         QStringLiteral("Camera %1 PTZ").arg(index + 1));
    xml.writeTextElement(tt, QStringLiteral("UseCount"), QStringLiteral("1"));
    xml.writeTextElement(tt, QStringLiteral("NodeToken"), QLatin1String(kNodeToken));
    xml.writeTextElement(tt, QStringLiteral("DefaultAbsolutePantTiltPositionSpace"),
                         QLatin1String(space::kPanTiltPosition));
    xml.writeTextElement(tt, QStringLiteral("DefaultAbsoluteZoomPositionSpace"),
                         QLatin1String(space::kZoomPosition));
    xml.writeTextElement(tt, QStringLiteral("DefaultRelativePanTiltTranslationSpace"),
                         QLatin1String(space::kPanTiltTranslation));
    xml.writeTextElement(tt, QStringLiteral("DefaultRelativeZoomTranslationSpace"),
                         QLatin1String(space::kZoomTranslation));
    xml.writeTextElement(tt, QStringLiteral("DefaultContinuousPanTiltVelocitySpace"),
                         QLatin1String(space::kPanTiltVelocity));
    xml.writeTextElement(tt, QStringLiteral("DefaultContinuousZoomVelocitySpace"),
                         QLatin1String(space::kZoomVelocity));
    xml.writeStartElement(tt, QStringLiteral("DefaultPTZSpeed"));
    writeVector(xml, "PanTilt", 1.0, 1.0, space::kPanTiltSpeed);
    writeVector(xml, "Zoom", 1.0, std::nullopt, space::kZoomSpeed);
    xml.writeEndElement();
    xml.writeTextElement(tt, QStringLiteral("DefaultPTZTimeout"),
                         QStringLiteral("PT%1S").arg(OnvifServices::kContinuousMoveMs / 1000));
    xml.writeStartElement(tt, QStringLiteral("PanTiltLimits"));
    writeSpace(xml, "Range", space::kPanTiltPosition, -1.0, 1.0, std::pair{-1.0, 1.0});
    xml.writeEndElement();
    xml.writeStartElement(tt, QStringLiteral("ZoomLimits"));
    writeSpace(xml, "Range", space::kZoomPosition, 0.0, 1.0);
    xml.writeEndElement();
    xml.writeEndElement();
}

void writeProfile(QXmlStreamWriter& xml, const char* element, int index) {
    const QLatin1String tt(ns::kSchema);
    xml.writeStartElement(QLatin1String(ns::kMedia), QLatin1String(element));
    xml.writeAttribute(QStringLiteral("token"), profileToken(index));
    xml.writeAttribute(QStringLiteral("fixed"), QStringLiteral("true"));
    xml.writeTextElement(tt, QStringLiteral("Name"), QStringLiteral("Camera %1").arg(index + 1));
    xml.writeStartElement(tt, QStringLiteral("VideoSourceConfiguration"));
    xml.writeAttribute(QStringLiteral("token"), QStringLiteral("source%1").arg(index + 1));
    xml.writeTextElement(tt, QStringLiteral("Name"), QStringLiteral("Camera %1").arg(index + 1));
    xml.writeTextElement(tt, QStringLiteral("UseCount"), QStringLiteral("1"));
    xml.writeTextElement(tt, QStringLiteral("SourceToken"), sourceToken(index));
    xml.writeEmptyElement(tt, QStringLiteral("Bounds"));
    xml.writeAttribute(QStringLiteral("x"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("y"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("width"), QString::number(kWidth));
    xml.writeAttribute(QStringLiteral("height"), QString::number(kHeight));
    xml.writeEndElement();
    xml.writeStartElement(tt, QStringLiteral("VideoEncoderConfiguration"));
    xml.writeAttribute(QStringLiteral("token"), QStringLiteral("encoder%1").arg(index + 1));
    xml.writeTextElement(tt, QStringLiteral("Name"), QStringLiteral("Camera %1").arg(index + 1));
    xml.writeTextElement(tt, QStringLiteral("UseCount"), QStringLiteral("1"));
    xml.writeTextElement(tt, QStringLiteral("Encoding"), QStringLiteral("H264"));
    xml.writeStartElement(tt, QStringLiteral("Resolution"));
    xml.writeTextElement(tt, QStringLiteral("Width"), QString::number(kWidth));
    xml.writeTextElement(tt, QStringLiteral("Height"), QString::number(kHeight));
    xml.writeEndElement();
    xml.writeTextElement(tt, QStringLiteral("Quality"), QStringLiteral("5"));
    xml.writeStartElement(tt, QStringLiteral("RateControl"));
    xml.writeTextElement(tt, QStringLiteral("FrameRateLimit"), QStringLiteral("25"));
    xml.writeTextElement(tt, QStringLiteral("EncodingInterval"), QStringLiteral("1"));
    xml.writeTextElement(tt, QStringLiteral("BitrateLimit"), QStringLiteral("4096"));
    xml.writeEndElement();
    xml.writeTextElement(tt, QStringLiteral("SessionTimeout"), QStringLiteral("PT60S"));
    xml.writeEndElement();
    writePtzConfiguration(xml, QStringLiteral("tt:PTZConfiguration"), index);
    xml.writeEndElement();
}

}  // namespace

void OnvifServices::profiles(Context& c) {
    c.respond();
    for (int i = 0; i < kProfiles; ++i) {
        writeProfile(c.xml(), "Profiles", i);
    }
    c.xml().writeEndElement();
}

void OnvifServices::profile(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    c.respond();
    writeProfile(c.xml(), "Profile", index);
    c.xml().writeEndElement();
}

void OnvifServices::videoSources(Context& c) {
    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tt(ns::kSchema);
    c.respond();
    for (int i = 0; i < kProfiles; ++i) {
        xml.writeStartElement(QLatin1String(ns::kMedia), QStringLiteral("VideoSources"));
        xml.writeAttribute(QStringLiteral("token"), sourceToken(i));
        xml.writeTextElement(tt, QStringLiteral("Framerate"), QStringLiteral("25"));
        xml.writeStartElement(tt, QStringLiteral("Resolution"));
        xml.writeTextElement(tt, QStringLiteral("Width"), QString::number(kWidth));
        xml.writeTextElement(tt, QStringLiteral("Height"), QString::number(kHeight));
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

void OnvifServices::mediaUri(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    throw invalidArg("NoSource", QStringLiteral("no stream is set for the camera: its video "
                                                "does not come through the console"));
}

// ---- PTZ ------------------------------------------------------------------

namespace {

void writeSpaces(QXmlStreamWriter& xml, const PanTiltRange& range) {
    const std::pair generic{-1.0, 1.0};
    writeSpace(xml, "AbsolutePanTiltPositionSpace", space::kPanTiltPosition, -1.0, 1.0, generic);
    writeSpace(xml, "AbsolutePanTiltPositionSpace", space::kPanTiltDegrees, range.panMin,
               range.panMax, std::pair{range.tiltMin, range.tiltMax});
    writeSpace(xml, "AbsoluteZoomPositionSpace", space::kZoomPosition, 0.0, 1.0);
    writeSpace(xml, "RelativePanTiltTranslationSpace", space::kPanTiltTranslation, -1.0, 1.0,
               generic);
    writeSpace(xml, "RelativePanTiltTranslationSpace", space::kPanTiltDegreesTranslation,
               range.panMin - range.panMax, range.panMax - range.panMin,
               std::pair{range.tiltMin - range.tiltMax, range.tiltMax - range.tiltMin});
    writeSpace(xml, "RelativeZoomTranslationSpace", space::kZoomTranslation, -1.0, 1.0);
    writeSpace(xml, "ContinuousPanTiltVelocitySpace", space::kPanTiltVelocity, -1.0, 1.0, generic);
    writeSpace(xml, "ContinuousZoomVelocitySpace", space::kZoomVelocity, -1.0, 1.0);
    writeSpace(xml, "PanTiltSpeedSpace", space::kPanTiltSpeed, 0.0, 1.0);
    writeSpace(xml, "ZoomSpeedSpace", space::kZoomSpeed, 0.0, 1.0);
}

int configurationIndex(const QString& token) {
    for (int i = 0; i < OnvifServices::kProfiles; ++i) {
        if (token.trimmed() == ptzToken(i)) {
            return i;
        }
    }
    throw invalidArg("NoConfig", QStringLiteral("no PTZ configuration %1").arg(token));
}

// The lens byte of a profile's camera: zoom 1 or zoom 2.
std::size_t zoomLens(int profile) {
    return profile == 0 ? 0 : 2;
}

}  // namespace

void OnvifServices::nodes(Context& c) {
    const UnitStatus& s = session_.status();
    const PanTiltRange range = rangeFromLimits(s.PanMinLimit, s.PanMaxLimit, s.TiltMinLimit,
                                               s.TiltMaxLimit, s.PanContinuous);
    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tt(ns::kSchema);
    c.respond();
    xml.writeStartElement(QLatin1String(ns::kPtz), QStringLiteral("PTZNode"));
    xml.writeAttribute(QStringLiteral("token"), QLatin1String(kNodeToken));
    xml.writeAttribute(QStringLiteral("FixedHomePosition"), QStringLiteral("true"));
    xml.writeTextElement(tt, QStringLiteral("Name"), QStringLiteral("Pan & tilt unit"));
    xml.writeStartElement(tt, QStringLiteral("SupportedPTZSpaces"));
    writeSpaces(xml, range);
    xml.writeEndElement();
    xml.writeTextElement(tt, QStringLiteral("MaximumNumberOfPresets"), QString::number(kPresets));
    xml.writeTextElement(tt, QStringLiteral("HomeSupported"), QStringLiteral("true"));
    xml.writeEndElement();
    xml.writeEndElement();
}

void OnvifServices::node(Context& c) {
    if (c.required("NodeToken").value() != QLatin1String(kNodeToken)) {
        throw invalidArg("NoEntity", QStringLiteral("no such PTZ node"));
    }
    nodes(c);
}

void OnvifServices::configurations(Context& c) {
    c.respond();
    for (int i = 0; i < kProfiles; ++i) {
        writePtzConfiguration(c.xml(), QStringLiteral("tptz:PTZConfiguration"), i);
    }
    c.xml().writeEndElement();
}

void OnvifServices::configuration(Context& c) {
    const int index = configurationIndex(c.required("PTZConfigurationToken").value());
    c.respond();
    writePtzConfiguration(c.xml(), QStringLiteral("tptz:PTZConfiguration"), index);
    c.xml().writeEndElement();
}

void OnvifServices::configurationOptions(Context& c) {
    configurationIndex(c.required("ConfigurationToken").value());
    const UnitStatus& s = session_.status();
    const PanTiltRange range = rangeFromLimits(s.PanMinLimit, s.PanMaxLimit, s.TiltMinLimit,
                                               s.TiltMaxLimit, s.PanContinuous);
    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tt(ns::kSchema);
    c.respond();
    xml.writeStartElement(QLatin1String(ns::kPtz), QStringLiteral("PTZConfigurationOptions"));
    xml.writeStartElement(tt, QStringLiteral("Spaces"));
    writeSpaces(xml, range);
    xml.writeEndElement();
    xml.writeStartElement(tt, QStringLiteral("PTZTimeout"));
    xml.writeTextElement(tt, QStringLiteral("Min"), QStringLiteral("PT0.1S"));
    xml.writeTextElement(tt, QStringLiteral("Max"),
                         QStringLiteral("PT%1S").arg(kContinuousMoveMs / 1000));
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndElement();
}

void OnvifServices::status(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    if (!session_.online()) {
        throw refusalFault(Refusal::Offline);
    }
    const UnitStatus& s = session_.status();
    const PanTiltRange range = rangeFromLimits(s.PanMinLimit, s.PanMaxLimit, s.TiltMinLimit,
                                               s.TiltMaxLimit, s.PanContinuous);
    const bool unitMoving = s.Moving();
    const bool jogging = session_.jogSources().owner().has_value();
    const bool panTiltMoving =
        unitMoving ||
        (jogging && (session_.jog().PanJogSpeed != 0 || session_.jog().TiltJogSpeed != 0));
    const bool zoomMoving = jog_.driving() && demand_.lens[zoomLens(index)] != 0;

    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tt(ns::kSchema);
    c.respond();
    xml.writeStartElement(QLatin1String(ns::kPtz), QStringLiteral("PTZStatus"));
    xml.writeStartElement(tt, QStringLiteral("Position"));
    writeVector(xml, "PanTilt",
                angleToGeneric(static_cast<double>(s.CurrentPan), range.panMin, range.panMax),
                angleToGeneric(static_cast<double>(s.CurrentTilt), range.tiltMin, range.tiltMax),
                space::kPanTiltPosition);
    writeVector(xml, "Zoom", lensPositionToZoom(s.Lens[zoomLens(index)]), std::nullopt,
                space::kZoomPosition);
    xml.writeEndElement();
    xml.writeStartElement(tt, QStringLiteral("MoveStatus"));
    xml.writeTextElement(tt, QStringLiteral("PanTilt"),
                         panTiltMoving ? QStringLiteral("MOVING") : QStringLiteral("IDLE"));
    xml.writeTextElement(tt, QStringLiteral("Zoom"),
                         zoomMoving ? QStringLiteral("MOVING") : QStringLiteral("IDLE"));
    xml.writeEndElement();
    xml.writeTextElement(tt, QStringLiteral("UtcTime"), clock_().toUTC().toString(Qt::ISODate));
    xml.writeEndElement();
    xml.writeEndElement();
}

namespace {

// The range the generic spaces cover now; a unit that has not yet told its
// soft limits cannot be moved in them.
PanTiltRange currentRange(const Session& session) {
    const UnitStatus& s = session.status();
    return rangeFromLimits(s.PanMinLimit, s.PanMaxLimit, s.TiltMinLimit, s.TiltMaxLimit,
                           s.PanContinuous);
}

const char* spaceOf(const XmlElement& vector, const char* fallback) {
    const auto given = vector.attribute("space");
    if (!given || given->trimmed().isEmpty()) {
        return fallback;
    }
    for (const char* known :
         {space::kPanTiltPosition, space::kPanTiltTranslation, space::kPanTiltVelocity,
          space::kPanTiltDegrees, space::kPanTiltDegreesTranslation, space::kZoomPosition,
          space::kZoomTranslation, space::kZoomVelocity}) {
        if (given->trimmed() == QLatin1String(known)) {
            return known;
        }
    }
    return "";
}

const XmlElement* vectorPart(const XmlElement& vector, const char* name) {
    return vector.child(ns::kSchema, name);
}

// Pan and tilt from a PanTilt element in one of `spaces` (the generic one
// first): generic values -1..1 over `range`, degrees as they are. A wrong
// space or a generic value outside -1..1 is the fault `subcode`.
std::pair<double, double> panTiltOf(const XmlElement& panTilt, const PanTiltRange& range,
                                    const char* generic, const char* degrees, bool translation,
                                    const char* subcode) {
    const char* space = spaceOf(panTilt, generic);
    const double x = numberAttribute(panTilt, "x");
    const double y = numberAttribute(panTilt, "y");
    if (space == degrees) {
        return {x, y};
    }
    if (space != generic || !inGenericRange(x) || !inGenericRange(y)) {
        throw invalidArg(subcode, QStringLiteral("pan and tilt must lie in -1..1 of %1 or be in "
                                                 "degrees in %2")
                                      .arg(QLatin1String(generic), QLatin1String(degrees)));
    }
    if (!range.usable()) {
        throw refusalFault(Refusal::Offline);
    }
    if (translation) {
        return {genericToDelta(x, range.panMin, range.panMax),
                genericToDelta(y, range.tiltMin, range.tiltMax)};
    }
    return {genericToAngle(x, range.panMin, range.panMax),
            genericToAngle(y, range.tiltMin, range.tiltMax)};
}

double zoomOf(const XmlElement& zoom, const char* space, double low, const char* subcode) {
    const double x = numberAttribute(zoom, "x");
    if (spaceOf(zoom, space) != space || !inGenericRange(x, low, 1.0)) {
        throw invalidArg(
            subcode,
            QStringLiteral("zoom must lie in %1..1 of %2").arg(low).arg(QLatin1String(space)));
    }
    return x;
}

// Runs a move to its end from the event loop; a range fault is told as the
// console tells any other.
void launchMove(Session& session, QCoro::Task<Outcome> move) {
    launch(session.state(), "Onvif_Move", completing(std::move(move)));
}

}  // namespace

void OnvifServices::absoluteMove(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    const XmlElement& position = c.required("Position");
    const XmlElement* panTilt = vectorPart(position, "PanTilt");
    const XmlElement* zoom = vectorPart(position, "Zoom");
    if (panTilt == nullptr && zoom == nullptr) {
        throw missing("PanTilt or Zoom in its Position");
    }
    PanTiltTarget target;
    target.holdPan = target.holdTilt = panTilt == nullptr;
    if (panTilt != nullptr) {
        const auto [pan, tilt] =
            panTiltOf(*panTilt, currentRange(session_), space::kPanTiltPosition,
                      space::kPanTiltDegrees, false, "InvalidPosition");
        target.pan = toHundredths(pan);
        target.tilt = toHundredths(tilt);
    }
    std::optional<int> lens;
    if (zoom != nullptr) {
        lens = zoomToLensPosition(zoomOf(*zoom, space::kZoomPosition, 0.0, "InvalidPosition"));
    }
    if (const auto refusal = session_.refusalFor(Requester::Program, &target)) {
        throw refusalFault(*refusal);
    }
    demand_ = {};
    jog_.stop();
    if (lens) {
        launchMove(session_, session_.moveToWithLenses(
                                 target, lensesWith(session_.status(), zoomLens(index), *lens)));
    } else {
        launchMove(session_, session_.moveTo(target));
    }
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::relativeMove(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    const XmlElement& translation = c.required("Translation");
    const XmlElement* panTilt = vectorPart(translation, "PanTilt");
    const XmlElement* zoom = vectorPart(translation, "Zoom");
    const double zoomBy =
        zoom == nullptr ? 0.0 : zoomOf(*zoom, space::kZoomTranslation, -1.0, "InvalidTranslation");
    if (panTilt == nullptr && zoom == nullptr) {
        throw missing("PanTilt or Zoom in its Translation");
    }
    double pan = 0.0;
    double tilt = 0.0;
    if (panTilt != nullptr) {
        std::tie(pan, tilt) =
            panTiltOf(*panTilt, currentRange(session_), space::kPanTiltTranslation,
                      space::kPanTiltDegreesTranslation, true, "InvalidTranslation");
        pan = toHundredths(pan);
        tilt = toHundredths(tilt);
    }
    const UnitStatus& s = session_.status();
    const PanTiltTarget landing{static_cast<double>(s.CurrentPan) + pan,
                                static_cast<double>(s.CurrentTilt) + tilt, panTilt == nullptr,
                                panTilt == nullptr};
    if (const auto refusal = session_.refusalFor(Requester::Program, &landing)) {
        throw refusalFault(*refusal, "InvalidTranslation");
    }
    demand_ = {};
    jog_.stop();
    // Clients send a zoom of 0 with every pan and tilt move: the unit's
    // own move by an angle then.
    if (zoomBy != 0.0) {
        const std::size_t lens = zoomLens(index);
        const auto lenses =
            lensesWith(s, lens, zoomToLensPosition(lensPositionToZoom(s.Lens[lens]) + zoomBy));
        PanTiltTarget target = landing;
        target.pan = toHundredths(target.pan);
        target.tilt = toHundredths(target.tilt);
        launchMove(session_, session_.moveToWithLenses(target, lenses));
    } else {
        launchMove(session_, session_.moveBy(pan, tilt));
    }
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::continuousMove(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    const XmlElement& velocity = c.required("Velocity");
    const XmlElement* panTilt = vectorPart(velocity, "PanTilt");
    const XmlElement* zoom = vectorPart(velocity, "Zoom");
    if (panTilt == nullptr && zoom == nullptr) {
        throw missing("PanTilt or Zoom in its Velocity");
    }
    int timeoutMs = kContinuousMoveMs;
    if (const XmlElement* timeout = c.optional("Timeout")) {
        const auto ms = durationMs(timeout->value().toStdString());
        if (!ms || *ms <= 0) {
            throw invalidArg("TimeoutNotSupported",
                             QStringLiteral("%1 is not a timeout").arg(timeout->value()));
        }
        timeoutMs = std::min(*ms, kContinuousMoveMs);
    }
    JogDemand demand = jog_.driving() ? demand_ : JogDemand{};
    if (panTilt != nullptr) {
        const double x = numberAttribute(*panTilt, "x");
        const double y = numberAttribute(*panTilt, "y");
        if (spaceOf(*panTilt, space::kPanTiltVelocity) != space::kPanTiltVelocity ||
            !inGenericRange(x) || !inGenericRange(y)) {
            throw invalidArg("InvalidVelocity",
                             QStringLiteral("pan and tilt must lie in -1..1 of %1")
                                 .arg(QLatin1String(space::kPanTiltVelocity)));
        }
        demand.pan = velocityToAxis(x);
        demand.tilt = velocityToAxis(y);
    }
    if (zoom != nullptr) {
        demand.lens.at(zoomLens(index)) =
            zoomVelocityToLensByte(zoomOf(*zoom, space::kZoomVelocity, -1.0, "InvalidVelocity"));
    }
    jog_.setRefreshMs(timeoutMs);
    if (const auto refusal = jog_.drive(demand)) {
        throw refusalFault(*refusal);
    }
    demand_ = demand.moving() ? demand : JogDemand{};
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::stopMove(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    const auto flag = [&c](const char* name) {
        const XmlElement* element = c.optional(name);
        return element == nullptr || element->value() != QLatin1String("false");
    };
    const bool panTilt = flag("PanTilt");
    const bool zoom = flag("Zoom");
    JogDemand demand = jog_.driving() ? demand_ : JogDemand{};
    if (panTilt) {
        demand.pan = {};
        demand.tilt = {};
    }
    if (zoom) {
        demand.lens = {};
    }
    if (demand.moving() && !jog_.drive(demand)) {
        demand_ = demand;
    } else {
        demand_ = {};
        jog_.stop();
        // A move to a position or preset under way stops too, unless the
        // operator steers now.
        if (panTilt && !session_.jogSources().operatorJogging()) {
            if (const auto refusal = session_.stop().refusal()) {
                throw refusalFault(*refusal);
            }
        }
    }
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::presets(Context& c) {
    const int index = profileIndex(c.required("ProfileToken").value());
    const PanTiltRange range = currentRange(session_);
    QXmlStreamWriter& xml = c.xml();
    const QLatin1String tt(ns::kSchema);
    c.respond();
    for (int preset = 0; preset < kPresets; ++preset) {
        const PresetRecord& record = session_.presets().at(preset);
        xml.writeStartElement(QLatin1String(ns::kPtz), QStringLiteral("Preset"));
        xml.writeAttribute(QStringLiteral("token"), QString::number(preset));
        xml.writeTextElement(tt, QStringLiteral("Name"), QStringLiteral("Preset %1").arg(preset));
        xml.writeStartElement(tt, QStringLiteral("PTZPosition"));
        writeVector(xml, "PanTilt", angleToGeneric(record.pan / 100.0, range.panMin, range.panMax),
                    angleToGeneric(record.tilt / 100.0, range.tiltMin, range.tiltMax),
                    space::kPanTiltPosition);
        writeVector(xml, "Zoom", lensPositionToZoom(index == 0 ? record.zoom1 : record.zoom2),
                    std::nullopt, space::kZoomPosition);
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

namespace {
int presetOf(const XmlElement& token) {
    const auto preset = presetFromToken(token.value());
    if (!preset) {
        throw invalidArg("NoToken", QStringLiteral("no preset %1: the presets are 0 to %2")
                                        .arg(token.value())
                                        .arg(OnvifServices::kPresets - 1));
    }
    return *preset;
}
}  // namespace

void OnvifServices::gotoPreset(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    const int preset = presetOf(c.required("PresetToken"));
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        throw refusalFault(*refusal);
    }
    demand_ = {};
    jog_.stop();
    launchMove(session_, session_.goToPreset(preset));
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::setPreset(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    std::optional<int> preset;
    if (const XmlElement* token = c.optional("PresetToken")) {
        preset = presetOf(*token);
    } else if (const XmlElement* name = c.optional("PresetName")) {
        // A name the presets are listed under picks that preset.
        const QString given = name->value();
        if (given.startsWith(QLatin1String("Preset "))) {
            preset = presetFromToken(given.mid(7));
        }
    }
    if (!preset) {
        // A new one: the first cleared preset (0/0, no lenses).
        for (int n = 0; n < kPresets && !preset; ++n) {
            const PresetRecord& r = session_.presets().at(n);
            if (r.pan == 0 && r.tilt == 0 && r.zoom1 == 0 && r.focus1 == 0 && r.zoom2 == 0 &&
                r.focus2 == 0) {
                preset = n;
            }
        }
    }
    if (!preset) {
        throw receiverFault({QStringLiteral("ter:Action"), QStringLiteral("ter:TooManyPresets")},
                            QStringLiteral("every preset is in use"));
    }
    if (jog_.driving()) {
        throw receiverFault({QStringLiteral("ter:Action"), QStringLiteral("ter:MovingPTZ")},
                            QStringLiteral("a preset is not saved while the platform jogs"));
    }
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        throw refusalFault(*refusal);
    }
    launchMove(session_, session_.saveCurrentPosition(*preset));
    c.respond();
    c.soap.text(ns::kPtz, "PresetToken", QString::number(*preset));
    c.xml().writeEndElement();
}

void OnvifServices::removePreset(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    const int preset = presetOf(c.required("PresetToken"));
    // The unit's presets cannot be deleted: one removed is cleared to 0/0,
    // as the unit clears them all.
    const PanTiltTarget cleared{};
    if (const auto refusal = session_.refusalFor(Requester::Program, &cleared)) {
        throw refusalFault(*refusal);
    }
    launchMove(session_, session_.savePreset(preset, cleared));
    c.respond();
    c.xml().writeEndElement();
}

void OnvifServices::gotoHome(Context& c) {
    profileIndex(c.required("ProfileToken").value());
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        throw refusalFault(*refusal);
    }
    demand_ = {};
    jog_.stop();
    launchMove(session_, session_.moveHome());
    c.respond();
    c.xml().writeEndElement();
}

}  // namespace halvex::onvif
