// Envelopes as the services read them, the username token's digest and its
// window, and the PTZ spaces' numbers.

#include <gtest/gtest.h>

#include <QDateTime>

#include "remote/onvif/ptz_spaces.h"
#include "remote/onvif/soap_message.h"
#include "remote/onvif/username_token.h"
#include "tests/remote/onvif/onvif_rig.h"

namespace halvex::onvif {
namespace {

QByteArray soap12(const QByteArray& inside) {
    return "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">" + inside +
           "</s:Envelope>";
}

// "env:Sender ter:WellFormed", or the body element's name.
QString outcomeOf(const QByteArray& xml) {
    const auto parsed = parseSoapRequest(xml);
    if (const auto* fault = std::get_if<SoapFault>(&parsed)) {
        return (QStringList{fault->code} + fault->subcodes).join(QLatin1Char(' '));
    }
    return std::get<SoapRequest>(parsed).body.name;
}

TEST(SoapMessage, MalformedOrForeignEnvelopesAreAnsweredWithTheirFault) {
    const auto body = [](const QByteArray& inside) {
        return soap12("<s:Body>" + inside + "</s:Body>");
    };
    // The envelope and its body are two levels and two elements of their own.
    const auto nested = [&](int levels) {
        return body(QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels));
    };
    const auto wide = [&](int inside) {
        return body("<a>" + QByteArray("<b/>").repeated(inside) + "</a>");
    };
    const auto billing = [](const char* mustUnderstand) {
        return soap12("<s:Header><x:Billing xmlns:x=\"urn:x\"" + QByteArray(mustUnderstand) +
                      "/></s:Header><s:Body><a/></s:Body>");
    };
    const char* wellFormed = "env:Sender ter:WellFormed";
    const char* invalid = "env:Sender ter:InvalidArgs";
    const std::pair<QByteArray, const char*> cases[] = {
        {body("<GetNodes xmlns=\"urn:x\"/>"), "GetNodes"},
        {"<s:Envelope", wellFormed},
        {soap12("<s:Body><GetNodes>").chopped(13), wellFormed},
        {body("<a/>") + "<b/>", wellFormed},
        {"<!DOCTYPE s [<!ENTITY e \"e\">]>" + body("<a>&e;</a>"), wellFormed},
        {"<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><a/>"
         "</s:Body></s:Envelope>",
         "env:VersionMismatch"},
        {"<Message><Body><a/></Body></Message>", invalid},
        {soap12("<s:Header/>"), invalid},
        {body(" "), invalid},
        {nested(31), "a"},  // as deep as is read
        {nested(32), invalid},
        {wide(4093), "a"},  // as many elements as are read
        {wide(4094), invalid},
        {billing(" s:mustUnderstand=\"true\""), "env:MustUnderstand"},
        {billing(" s:mustUnderstand=\"1\""), "env:MustUnderstand"},
        {billing(" s:mustUnderstand=\"false\""), "a"}};
    for (const auto& [xml, outcome] : cases) {
        SCOPED_TRACE(xml.left(160).toStdString());
        EXPECT_EQ(outcomeOf(xml), QString::fromLatin1(outcome));
    }
}

class TokenTest : public ::testing::Test {
  protected:
    const QDateTime now = QDateTime::fromString("2024-03-01T12:00:00Z", Qt::ISODate);

    static UsernameToken token(const QString& nonce, const QDateTime& created,
                               const QString& password = QStringLiteral("secret"),
                               const QString& user = QStringLiteral("admin")) {
        const QString createdText = created.toString(Qt::ISODateWithMs);
        return {user, UsernameTokenCheck::digest(nonce, createdText, password),
                QStringLiteral("http://docs.oasis-open.org/wss/2004/01/"
                               "oasis-200401-wss-username-token-profile-1.0#PasswordDigest"),
                nonce, createdText};
    }
    UsernameTokenCheck::Verdict check(const std::optional<UsernameToken>& token) {
        return tokens.check(token, QStringLiteral("admin"), QStringLiteral("secret"), now);
    }

    UsernameTokenCheck tokens;
};

TEST_F(TokenTest, TheDigestIsSha1OfNonceBytesCreatedAndPassword) {
    // The worked example clients are checked against.
    EXPECT_EQ(UsernameTokenCheck::digest(QStringLiteral("LKqI6G/AikKCQrN0zqZFlg=="),
                                         QStringLiteral("2010-09-16T07:50:45Z"),
                                         QStringLiteral("userpassword")),
              QStringLiteral("tuOSpGlFlIXsozq4HFNeeGeFLEI="));
}

TEST_F(TokenTest, ATokenIsTakenOnceWithinFiveMinutesOfNow) {
    using Verdict = UsernameTokenCheck::Verdict;
    UsernameToken text = token(QStringLiteral("bm9uY2Ux"), now);
    text.passwordType = QStringLiteral("...#PasswordText");
    UsernameToken noNonce = token(QString(), now);
    UsernameToken cut = token(QStringLiteral("bm9uY2U4"), now);
    cut.password.chop(4);
    UsernameToken firstWrong = token(QStringLiteral("bm9uY2U5"), now);
    firstWrong.password[0] = firstWrong.password[0] == QLatin1Char('A') ? 'B' : 'A';
    const struct {
        const char* name;
        std::optional<UsernameToken> token;
        Verdict verdict;
    } cases[] = {
        {"none", std::nullopt, Verdict::NoToken},
        {"plain password", text, Verdict::NotDigest},
        {"no nonce", noNonce, Verdict::NotDigest},
        {"wrong user",
         token(QStringLiteral("bm9uY2Uy"), now, QStringLiteral("secret"), QStringLiteral("root")),
         Verdict::WrongUser},
        {"a digest cut short", cut, Verdict::WrongDigest},
        {"a digest wrong in its first character", firstWrong, Verdict::WrongDigest},
        {"made five minutes ago to the second",
         token(QStringLiteral("bm9uY2Ux"), now.addSecs(-300)), Verdict::Accepted},
        {"made six minutes ago", token(QStringLiteral("bm9uY2U0"), now.addSecs(-360)),
         Verdict::Stale},
        {"made six minutes ahead", token(QStringLiteral("bm9uY2U1"), now.addSecs(360)),
         Verdict::Stale},
        {"now", token(QStringLiteral("bm9uY2U3"), now), Verdict::Accepted},
        {"the same again", token(QStringLiteral("bm9uY2U3"), now), Verdict::Replayed},
        {"its nonce with another time", token(QStringLiteral("bm9uY2U3"), now.addSecs(-1)),
         Verdict::Replayed},
        {"one refused may come right", token(QStringLiteral("bm9uY2U5"), now), Verdict::Accepted},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(check(c.token), c.verdict);
    }
}

TEST(PtzSpaces, EdgesOfTheSpacesAndTimeoutsReadAsDurations) {
    // A unit that pans for ever spans a whole turn; the other spaces' numbers
    // are checked by the moves they put on the line.
    EXPECT_EQ(rangeFromLimits(-10.0f, 10.0f, -5.0f, 5.0f, true).panMax, 180.0);
    // A client's 1 may come a little over; anything more is outside.
    for (const double x : {1.0000005, -1.0000005}) {
        EXPECT_TRUE(inGenericRange(x)) << x;
    }
    for (const double x : {1.00001, -1.00001, std::nan("")}) {
        EXPECT_FALSE(inGenericRange(x)) << x;
    }
    EXPECT_EQ(angleToGeneric(5.0, 10.0, 10.0), 0.0);  // no range to place it in
    // The slowest speed that moves at all still has its way.
    EXPECT_EQ(velocityToAxis(0.003).speed, 1);
    EXPECT_TRUE(velocityToAxis(0.003).direction);
    const std::pair<const char*, int> durations[] = {
        {"PT5S", 5000},      {"PT0.25S", 250},  {"PT1M30S", 90000},       {"P0DT0H0M10S", 10000},
        {" PT1H ", 3600000}, {"P1D", 86400000}, {"PT000000000001S", 1000}};
    for (const auto& [text, ms] : durations) {
        EXPECT_EQ(durationMs(text), ms) << text;
    }
    for (const char* text : {"P2D", "PT", "P", "5S", "PT5", "PT1S1M", "PT.5S", "PT1.5M", "P1H",
                             "PT-1S", "PT1ST1S", "PT0000000000001S"}) {
        EXPECT_EQ(durationMs(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace halvex::onvif
