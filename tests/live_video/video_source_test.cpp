#include <gtest/gtest.h>

#include "live_video/video_source.h"

namespace halvex {
namespace {

using Kind = VideoSource::Kind;

struct Accepted {
    const char* text;
    Kind kind;
    const char* address = nullptr;  // the text itself when not given
};

TEST(VideoSourceText, AcceptedTextsGiveTheirKindAndComeBackTheSame) {
    const Accepted cases[] = {
        {"", Kind::None},
        {"NONE", Kind::None, ""},
        {"/dev/video0", Kind::Device},
        {"v4l2:///dev/video1", Kind::Device, "/dev/video1"},
        {" rtsp://unit.local/out2 ", Kind::Rtsp, "rtsp://unit.local/out2"},
        {"rtsps://unit.example.com:322/out1", Kind::Rtsp},
        {"rtp://0.0.0.0:5004", Kind::Rtp},
        {"udp://127.0.0.1:5000/", Kind::Udp},
        {"srt://10.0.0.7:9000?mode=listener&latency=80", Kind::Srt},
        {"http://10.0.0.9/mjpg/video.mjpg", Kind::Http},
        {"https://cam.example.com:8443/stream", Kind::Http},
    };
    for (const Accepted& entry : cases) {
        SCOPED_TRACE(entry.text);
        QString why;
        const std::optional<VideoSource> source =
            parseVideoSource(QString::fromUtf8(entry.text), &why);
        ASSERT_TRUE(source.has_value()) << why.toStdString();
        EXPECT_EQ(source->kind, entry.kind);
        EXPECT_EQ(source->address, QString::fromUtf8(entry.address ? entry.address : entry.text));
        EXPECT_EQ(parseVideoSource(sourceText(*source)), source);
    }
}

struct Refused {
    const char* text;
    const char* reason;  // a word of what the operator is told
};

TEST(VideoSourceText, OtherTextsAreRefusedWithAReason) {
    const Refused cases[] = {
        {"/dev/video0/../sda", "not a capture device"},
        {"v4l2://video0", "not a capture device"},
        {"file:///tmp/clip.mkv", "unknown kind"},
        {"rtsp://", "no host"},
        {"rtsp://x ! filesink location=/tmp/y", "spaces"},
        {"udp://10.0.0.1:0", "no port"},
        {"udp://10.0.0.1:5000/path", "a path"},
        {"rtp://10.0.0.1:5000?x=1", "options"},
        {"rtsp://host:port/out1", "well-formed"},
    };
    for (const Refused& entry : cases) {
        SCOPED_TRACE(entry.text);
        QString why;
        EXPECT_FALSE(parseVideoSource(QString::fromUtf8(entry.text), &why).has_value());
        EXPECT_TRUE(why.startsWith(QLatin1String("not a video source: "))) << why.toStdString();
        EXPECT_TRUE(why.contains(QLatin1String(entry.reason))) << why.toStdString();
    }
}

TEST(VideoSourceText, AnAddressOfUpTo2048CharactersIsTakenALongerOneShownShort) {
    const QString start = QStringLiteral("rtsp://host/");
    const QString longest = start + QString(2048 - start.size(), QLatin1Char('a'));
    EXPECT_TRUE(parseVideoSource(longest).has_value());
    QString why;
    EXPECT_FALSE(parseVideoSource(longest + QLatin1Char('a'), &why).has_value());
    EXPECT_TRUE(why.contains(QLatin1String("too long"))) << why.toStdString();
    EXPECT_LT(why.size(), 200);
}

}  // namespace
}  // namespace halvex
