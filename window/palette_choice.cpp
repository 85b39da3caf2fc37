#include "window/palette_choice.h"

#include <QActionGroup>
#include <QApplication>
#include <QMenu>

#include "views/widgets/instrument_light.h"
#include "window/user_settings.h"

namespace halvex {

namespace {
const char* const kSettingsKey = "View/palette";
// Settings words and menu captions, in the order of Palette.
const char* const kWords[] = {"desktop", "dark", "night"};
const char* const kCaptions[] = {"&Desktop", "D&ark", "&Night (Red)"};
const char* const kNames[] = {"MenuPaletteDesktop", "MenuPaletteDark", "MenuPaletteNight"};

struct Colours {
    QColor window, text, base, alternateBase, button, light, midlight, mid, dark, shadow;
    QColor highlight, highlightedText, link, linkVisited, brightText, placeholder, disabledText;
};

QPalette paletteOf(const Colours& c) {
    QPalette palette;
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const bool off = group == QPalette::Disabled;
        const QColor& text = off ? c.disabledText : c.text;
        palette.setColor(group, QPalette::Window, c.window);
        palette.setColor(group, QPalette::WindowText, text);
        palette.setColor(group, QPalette::Base, off ? c.window : c.base);
        palette.setColor(group, QPalette::AlternateBase, c.alternateBase);
        palette.setColor(group, QPalette::Text, text);
        palette.setColor(group, QPalette::Button, c.button);
        palette.setColor(group, QPalette::ButtonText, text);
        palette.setColor(group, QPalette::BrightText, c.brightText);
        palette.setColor(group, QPalette::Light, c.light);
        palette.setColor(group, QPalette::Midlight, c.midlight);
        palette.setColor(group, QPalette::Mid, c.mid);
        palette.setColor(group, QPalette::Dark, c.dark);
        palette.setColor(group, QPalette::Shadow, c.shadow);
        palette.setColor(group, QPalette::Highlight, off ? c.mid : c.highlight);
        palette.setColor(group, QPalette::HighlightedText,
                         off ? c.disabledText : c.highlightedText);
        palette.setColor(group, QPalette::Link, c.link);
        palette.setColor(group, QPalette::LinkVisited, c.linkVisited);
        palette.setColor(group, QPalette::ToolTipBase, c.button);
        palette.setColor(group, QPalette::ToolTipText, c.text);
        palette.setColor(group, QPalette::PlaceholderText, c.placeholder);
    }
    return palette;
}
}  // namespace

QPalette darkPalette() {
    return paletteOf({.window = QColor(45, 45, 48),
                      .text = QColor(222, 222, 222),
                      .base = QColor(30, 30, 32),
                      .alternateBase = QColor(45, 45, 48),
                      .button = QColor(55, 55, 58),
                      .light = QColor(82, 82, 86),
                      .midlight = QColor(66, 66, 70),
                      .mid = QColor(40, 40, 42),
                      .dark = QColor(24, 24, 26),
                      .shadow = QColor(8, 8, 8),
                      .highlight = QColor(42, 110, 190),
                      .highlightedText = QColor(255, 255, 255),
                      .link = QColor(110, 170, 245),
                      .linkVisited = QColor(170, 130, 235),
                      .brightText = QColor(255, 90, 90),
                      .placeholder = QColor(140, 140, 140),
                      .disabledText = QColor(125, 125, 125)});
}

QPalette nightPalette() {
    // Dim red on black: red light spares the eye's dark adaptation, and
    // nothing on the screen is brighter than the text.
    return paletteOf({.window = QColor(10, 0, 0),
                      .text = QColor(190, 44, 30),
                      .base = QColor(20, 2, 2),
                      .alternateBase = QColor(28, 4, 3),
                      .button = QColor(32, 5, 4),
                      .light = QColor(62, 12, 9),
                      .midlight = QColor(46, 8, 6),
                      .mid = QColor(26, 3, 2),
                      .dark = QColor(6, 0, 0),
                      .shadow = QColor(0, 0, 0),
                      .highlight = QColor(88, 16, 10),
                      .highlightedText = QColor(228, 76, 52),
                      .link = QColor(190, 60, 40),
                      .linkVisited = QColor(150, 42, 30),
                      .brightText = QColor(210, 64, 44),
                      .placeholder = QColor(112, 26, 18),
                      .disabledText = QColor(126, 30, 20)});
}

void applyPalette(Palette palette) {
    setInstrumentLight(palette == Palette::Night ? InstrumentLight::Night : InstrumentLight::Day);
    switch (palette) {
        case Palette::Desktop:
            // A palette that sets nothing falls back on the desktop's, and
            // keeps following it when the desktop's theme changes.
            QApplication::setPalette(QPalette());
            break;
        case Palette::Dark:
            QApplication::setPalette(darkPalette());
            break;
        case Palette::Night:
            QApplication::setPalette(nightPalette());
            break;
    }
}

PaletteChoice::PaletteChoice(QMenu& viewMenu, QObject* parent) : QObject(parent) {
    QMenu* menu = viewMenu.addMenu(QStringLiteral("&Palette"));
    menu->setObjectName(QStringLiteral("PaletteMenu"));
    auto* group = new QActionGroup(menu);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        QAction* entry = menu->addAction(QString::fromLatin1(kCaptions[i]));
        entry->setObjectName(QString::fromLatin1(kNames[i]));
        entry->setCheckable(true);
        group->addAction(entry);
        const auto palette = static_cast<Palette>(i);
        connect(entry, &QAction::triggered, this, [this, palette] { choose(palette); });
        entries_[i] = entry;
    }
    const QString stored = userSettings()->value(QLatin1String(kSettingsKey)).toString();
    Palette palette = Palette::Desktop;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (stored == QLatin1String(kWords[i])) {
            palette = static_cast<Palette>(i);
        }
    }
    current_ = palette;
    entries_[static_cast<std::size_t>(palette)]->setChecked(true);
    applyPalette(palette);
}

void PaletteChoice::choose(Palette palette) {
    const auto index = static_cast<std::size_t>(palette);
    current_ = palette;
    entries_[index]->setChecked(true);
    applyPalette(palette);
    userSettings()->setValue(QLatin1String(kSettingsKey), QLatin1String(kWords[index]));
}

}  // namespace halvex
