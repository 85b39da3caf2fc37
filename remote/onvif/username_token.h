#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <optional>

#include "remote/onvif/soap_message.h"

namespace halvex::onvif {

// WS-Security's UsernameToken with a password digest, as ONVIF clients sign
// their requests: Base64(SHA-1(nonce + created + password)), the nonce as
// its bytes. A token is taken once: its Created must lie within the window
// of now, and a nonce seen within the window is not taken again.
class UsernameTokenCheck {
  public:
    static constexpr qint64 kWindowSeconds = 300;

    enum class Verdict { Accepted, NoToken, NotDigest, WrongUser, WrongDigest, Stale, Replayed };

    Verdict check(const std::optional<UsernameToken>& token, const QString& user,
                  const QString& password, const QDateTime& now);

    // The digest a client sends for `password`: nonce Base64 as sent,
    // created as sent.
    static QString digest(const QString& nonce, const QString& created, const QString& password);

  private:
    void forgetExpired(const QDateTime& now);

    // Nonces taken, each with the time after which its token is stale anyway.
    QHash<QByteArray, QDateTime> seen_;
};

// The words for a verdict, as the fault's reason gives them.
QString describe(UsernameTokenCheck::Verdict verdict);

}  // namespace halvex::onvif
