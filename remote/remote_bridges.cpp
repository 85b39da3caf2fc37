#include "remote/remote_bridges.h"

#include <QSettings>

#include "remote/onvif/onvif_server.h"
#include "remote/pelco_d/pelco_d_bridge.h"
#include "remote/visca/visca_bridge.h"

namespace halvex {

static_assert(BridgeSettings::kViscaRefreshMs == ViscaBridge::kDefaultRefreshMs);
static_assert(BridgeSettings::kPelcoRefreshMs == PelcoDBridge::kDefaultRefreshMs);

namespace {

QString endpoint(const QHostAddress& address, quint16 port) {
    return QStringLiteral("%1:%2").arg(address.toString()).arg(port);
}

}  // namespace

template <typename Bridge>
void RemoteBridges::track(Kind kind, Bridge* bridge) {
    connect(bridge, &Bridge::clientCountChanged, this, [this, kind](int clients) {
        stateOf(kind).clients = clients;
        emit stateChanged();
    });
    connect(bridge, &Bridge::commandHandled, this,
            [this, kind](const QString& what, const QString& peer) {
                stateOf(kind).lastCommand = QStringLiteral("%1 (%2)").arg(what, peer);
                emit stateChanged();
            });
}

RemoteBridges::RemoteBridges(Session& session, QObject* parent)
    : QObject(parent),
      onvif_(std::make_unique<OnvifServer>(session)),
      visca_(std::make_unique<ViscaBridge>(session)),
      pelcoD_(std::make_unique<PelcoDBridge>(session)) {
    track(Kind::Onvif, onvif_.get());
    track(Kind::Visca, visca_.get());
    track(Kind::PelcoD, pelcoD_.get());
}

RemoteBridges::~RemoteBridges() = default;

QString RemoteBridges::nameOf(Kind kind) {
    switch (kind) {
        case Kind::Onvif:
            return QStringLiteral("ONVIF");
        case Kind::Visca:
            return QStringLiteral("VISCA");
        case Kind::PelcoD:
            return QStringLiteral("Pelco-D");
    }
    return {};
}

QStringList RemoteBridges::apply(const BridgeSettings& settings, QStringList* started) {
    QStringList failures;
    const auto run = [&](Kind kind, QString (RemoteBridges::*start)(const BridgeSettings&)) {
        const QString failure = (this->*start)(settings);
        if (!failure.isEmpty()) {
            failures << failure;
        } else if (started != nullptr && state(kind).running) {
            *started << QStringLiteral("%1 on %2").arg(nameOf(kind), state(kind).where);
        }
    };
    run(Kind::Onvif, &RemoteBridges::startOnvif);
    run(Kind::Visca, &RemoteBridges::startVisca);
    run(Kind::PelcoD, &RemoteBridges::startPelcoD);
    settings_ = settings;
    emit stateChanged();
    return failures;
}

QString RemoteBridges::startOnvif(const BridgeSettings& settings) {
    State& state = stateOf(Kind::Onvif);
    onvif_->close();
    state = {};
    if (!settings.onvifPort) {
        return {};
    }
    onvif_->setCredentials(settings.onvifUser, settings.onvifPassword);
    if (!onvif_->listen(settings.listen, *settings.onvifPort)) {
        return QStringLiteral("ONVIF cannot listen on %1: %2")
            .arg(endpoint(settings.listen, *settings.onvifPort), onvif_->errorString());
    }
    state.running = true;
    state.where = endpoint(settings.listen, onvif_->serverPort());
    // Video management systems find devices by WS-Discovery on the local
    // network; a bridge kept to this computer has nobody to be found by.
    if (!settings.listen.isLoopback() && !onvif_->startDiscovery()) {
        state.where += QStringLiteral(" (not discoverable: %1)").arg(onvif_->errorString());
    }
    return {};
}

QString RemoteBridges::startVisca(const BridgeSettings& settings) {
    State& state = stateOf(Kind::Visca);
    visca_->close();
    state = {};
    if (!settings.viscaPort) {
        return {};
    }
    visca_->setRefreshMs(settings.viscaRefreshMs);
    if (!visca_->listen(settings.listen, *settings.viscaPort)) {
        return QStringLiteral("VISCA cannot listen on %1: %2")
            .arg(endpoint(settings.listen, *settings.viscaPort), visca_->errorString());
    }
    state.running = true;
    state.where = endpoint(settings.listen, visca_->serverPort());
    return {};
}

QString RemoteBridges::startPelcoD(const BridgeSettings& settings) {
    State& state = stateOf(Kind::PelcoD);
    pelcoD_->close();
    state = {};
    pelcoD_->setAddress(settings.pelcoAddress);
    pelcoD_->setRefreshMs(settings.pelcoRefreshMs);
    if (settings.pelcoTcpPort) {
        if (!pelcoD_->listen(settings.listen, *settings.pelcoTcpPort)) {
            return QStringLiteral("Pelco-D cannot listen on %1: %2")
                .arg(endpoint(settings.listen, *settings.pelcoTcpPort), pelcoD_->errorString());
        }
        state.where = endpoint(settings.listen, pelcoD_->serverPort());
    } else if (!settings.pelcoDevice.isEmpty()) {
        if (!pelcoD_->openSerial(settings.pelcoDevice, settings.pelcoBaud)) {
            return QStringLiteral("Pelco-D cannot open %1: %2")
                .arg(settings.pelcoDevice, pelcoD_->errorString());
        }
        state.where =
            QStringLiteral("%1 at %2 Bd").arg(settings.pelcoDevice).arg(settings.pelcoBaud);
    } else {
        return {};
    }
    state.running = true;
    return {};
}

void RemoteBridges::closeAll() {
    BridgeSettings none;
    none.listen = settings_.listen;
    apply(none);
}

BridgeSettings loadBridgeSettings() {
    QSettings kept(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("halvex"),
                   QStringLiteral("halvex"));
    kept.beginGroup(QStringLiteral("Remote"));
    BridgeSettings settings;
    const auto port = [&kept](const char* key) -> std::optional<quint16> {
        const uint value = kept.value(QLatin1String(key)).toUInt();
        return value >= 1 && value <= 65535 ? std::optional(static_cast<quint16>(value))
                                            : std::nullopt;
    };
    QHostAddress listen;
    if (listen.setAddress(kept.value(QStringLiteral("listen")).toString())) {
        settings.listen = listen;
    }
    settings.onvifPort = port("onvifPort");
    settings.onvifUser = kept.value(QStringLiteral("onvifUser")).toString();
    settings.onvifPassword = kept.value(QStringLiteral("onvifPassword")).toString();
    settings.viscaPort = port("viscaPort");
    settings.pelcoDevice = kept.value(QStringLiteral("pelcoDevice")).toString();
    settings.pelcoTcpPort = port("pelcoTcpPort");
    settings.pelcoAddress = std::clamp(
        kept.value(QStringLiteral("pelcoAddress"), settings.pelcoAddress).toInt(), 1, 255);
    settings.pelcoBaud = kept.value(QStringLiteral("pelcoBaud"), settings.pelcoBaud).toInt();
    const auto refresh = [&kept](const char* key, int otherwise) {
        return std::clamp(kept.value(QLatin1String(key), otherwise).toInt(), 0,
                          BridgeSettings::kLongestRefreshMs);
    };
    settings.viscaRefreshMs = refresh("viscaRefreshMs", settings.viscaRefreshMs);
    settings.pelcoRefreshMs = refresh("pelcoRefreshMs", settings.pelcoRefreshMs);
    return settings;
}

void saveBridgeSettings(const BridgeSettings& settings) {
    QSettings kept(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("halvex"),
                   QStringLiteral("halvex"));
    kept.beginGroup(QStringLiteral("Remote"));
    kept.setValue(QStringLiteral("listen"), settings.listen.toString());
    kept.setValue(QStringLiteral("onvifPort"), settings.onvifPort.value_or(0));
    kept.setValue(QStringLiteral("onvifUser"), settings.onvifUser);
    kept.setValue(QStringLiteral("onvifPassword"), settings.onvifPassword);
    kept.setValue(QStringLiteral("viscaPort"), settings.viscaPort.value_or(0));
    kept.setValue(QStringLiteral("pelcoDevice"), settings.pelcoDevice);
    kept.setValue(QStringLiteral("pelcoTcpPort"), settings.pelcoTcpPort.value_or(0));
    kept.setValue(QStringLiteral("pelcoAddress"), settings.pelcoAddress);
    kept.setValue(QStringLiteral("pelcoBaud"), settings.pelcoBaud);
    kept.setValue(QStringLiteral("viscaRefreshMs"), settings.viscaRefreshMs);
    kept.setValue(QStringLiteral("pelcoRefreshMs"), settings.pelcoRefreshMs);
}

}  // namespace halvex
