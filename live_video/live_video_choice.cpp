#include "live_video/live_video_choice.h"

#include <QSettings>

namespace halvex {

namespace {
QString key(const char* name, std::size_t index) {
    return QStringLiteral("LiveVideo/%1%2").arg(QLatin1String(name)).arg(index + 1);
}
}  // namespace

LiveVideoChoice loadLiveVideoChoice() {
    QSettings settings;
    LiveVideoChoice choice;
    for (std::size_t i = 0; i < choice.sources.size(); ++i) {
        choice.sources[i] = settings.value(key("Source", i)).toString();
        choice.lenses[i] = FieldOfView::fromText(settings.value(key("FieldOfView", i)).toString())
                               .value_or(FieldOfView());
    }
    return choice;
}

void saveLiveVideoChoice(const LiveVideoChoice& choice) {
    QSettings settings;
    for (std::size_t i = 0; i < choice.sources.size(); ++i) {
        settings.setValue(key("Source", i), choice.sources[i]);
        settings.setValue(key("FieldOfView", i), choice.lenses[i].text());
    }
}

}  // namespace halvex
