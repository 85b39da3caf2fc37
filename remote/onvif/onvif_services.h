#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <functional>

#include "remote/onvif/soap_message.h"
#include "remote/onvif/username_token.h"
#include "remote/remote_jog.h"
#include "session/jog_sources.h"

namespace halvex {
class Session;
}

namespace halvex::onvif {

// An answer to one SOAP request: the HTTP status and the envelope.
struct OnvifReply {
    int status = 200;
    QByteArray body;
    // The operation answered ("AbsoluteMove"), empty when none was read.
    QString operation;
};

// The ONVIF device, media and PTZ services over one session: each request
// is checked for its username token, then answered from the session, a move
// started through it. Two profiles, one per camera, share the one pan & tilt
// node; a profile's zoom is its camera's lens. No network here: the server
// hands in each request's envelope and the address the client reached.
class OnvifServices : public QObject {
    Q_OBJECT
  public:
    // The longest a continuous move runs without being asked again, and how
    // long it runs when its request names no Timeout.
    static constexpr int kContinuousMoveMs = 10000;
    static constexpr int kProfiles = 2;
    static constexpr int kPresets = 31;  // 0..30; 31 is the home position

    explicit OnvifServices(Session& session, QObject* parent = nullptr);

    void setCredentials(const QString& user, const QString& password);
    void setAnonymousAllowed(bool allowed) { anonymousAllowed_ = allowed; }
    // The device's clock, for the tokens' times (tests set their own).
    void setClock(std::function<QDateTime()> clock) { clock_ = std::move(clock); }

    // `address`: "http://host:port" as the client reached the server, for the
    // services' addresses in the answers.
    OnvifReply handle(const QByteArray& envelope, const QString& address);

    RemoteJog& jog() { return jog_; }

  private:
    struct Context;
    using Handler = std::function<void(OnvifServices&, Context&)>;

    OnvifReply answer(const SoapRequest& request, const QString& address);

    void deviceInformation(Context& c);
    void capabilities(Context& c);
    void services(Context& c);
    void systemDateAndTime(Context& c);
    void scopes(Context& c);

    void profiles(Context& c);
    void profile(Context& c);
    void videoSources(Context& c);
    void mediaUri(Context& c);

    void nodes(Context& c);
    void node(Context& c);
    void configurations(Context& c);
    void configuration(Context& c);
    void configurationOptions(Context& c);
    void status(Context& c);
    void absoluteMove(Context& c);
    void relativeMove(Context& c);
    void continuousMove(Context& c);
    void stopMove(Context& c);
    void presets(Context& c);
    void gotoPreset(Context& c);
    void setPreset(Context& c);
    void removePreset(Context& c);
    void gotoHome(Context& c);

    Session& session_;
    RemoteJog jog_;
    // What the continuous move asks for now, so that Stop can end pan and
    // tilt or zoom alone.
    JogDemand demand_;
    UsernameTokenCheck tokens_;
    QString user_ = QStringLiteral("admin");
    QString password_;
    bool anonymousAllowed_ = false;
    std::function<QDateTime()> clock_;
};

}  // namespace halvex::onvif
