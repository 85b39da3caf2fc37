#include "remote/onvif/username_token.h"

#include <QCryptographicHash>

namespace halvex::onvif {

namespace {
constexpr auto kDigestType =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#"
    "PasswordDigest";
// Past this many remembered nonces the expired ones are dropped.
constexpr qsizetype kPruneAt = 256;

// Compares in time that does not depend on where the two differ.
bool sameBytes(const QByteArray& a, const QByteArray& b) {
    if (a.size() != b.size()) {
        return false;
    }
    unsigned char difference = 0;
    for (qsizetype i = 0; i < a.size(); ++i) {
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    }
    return difference == 0;
}
}  // namespace

QString UsernameTokenCheck::digest(const QString& nonce, const QString& created,
                                   const QString& password) {
    QCryptographicHash sha1(QCryptographicHash::Sha1);
    sha1.addData(QByteArray::fromBase64(nonce.toLatin1()));
    sha1.addData(created.toUtf8());
    sha1.addData(password.toUtf8());
    return QString::fromLatin1(sha1.result().toBase64());
}

void UsernameTokenCheck::forgetExpired(const QDateTime& now) {
    for (auto it = seen_.begin(); it != seen_.end();) {
        it = it.value() < now ? seen_.erase(it) : std::next(it);
    }
}

UsernameTokenCheck::Verdict UsernameTokenCheck::check(const std::optional<UsernameToken>& token,
                                                      const QString& user, const QString& password,
                                                      const QDateTime& now) {
    if (!token) {
        return Verdict::NoToken;
    }
    // A digest without its nonce or time could be sent again at will.
    if (token->passwordType.trimmed() != QLatin1String(kDigestType) || token->nonce.isEmpty() ||
        token->created.isEmpty()) {
        return Verdict::NotDigest;
    }
    if (token->username != user) {
        return Verdict::WrongUser;
    }
    const QByteArray expected = digest(token->nonce, token->created, password).toLatin1();
    if (!sameBytes(token->password.toLatin1(), expected)) {
        return Verdict::WrongDigest;
    }
    const QDateTime created = QDateTime::fromString(token->created, Qt::ISODateWithMs);
    if (!created.isValid() || std::abs(created.secsTo(now)) > kWindowSeconds) {
        return Verdict::Stale;
    }
    const QByteArray nonce = QByteArray::fromBase64(token->nonce.toLatin1());
    if (const auto it = seen_.constFind(nonce); it != seen_.cend() && now <= it.value()) {
        return Verdict::Replayed;
    }
    if (seen_.size() >= kPruneAt) {
        forgetExpired(now);
    }
    seen_.insert(nonce, std::max(created, now).addSecs(kWindowSeconds));
    return Verdict::Accepted;
}

QString describe(UsernameTokenCheck::Verdict verdict) {
    using Verdict = UsernameTokenCheck::Verdict;
    switch (verdict) {
        case Verdict::Accepted:
            return QStringLiteral("accepted");
        case Verdict::NoToken:
            return QStringLiteral("the request carries no username token");
        case Verdict::NotDigest:
            return QStringLiteral("the token's password is not a digest with nonce and time");
        case Verdict::WrongUser:
        case Verdict::WrongDigest:
            return QStringLiteral("wrong user name or password");
        case Verdict::Stale:
            return QStringLiteral("the token's time is not within five minutes of the device's");
        case Verdict::Replayed:
            return QStringLiteral("the token's nonce was used before");
    }
    return {};
}

}  // namespace halvex::onvif
