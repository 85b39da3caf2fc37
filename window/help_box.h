#pragma once

#include <QPushButton>
#include <QTextBrowser>
#include <QWidget>

namespace halvex {

// The help window: one RTF document and a "Close" button. One for the whole
// run, created on first use; closing only hides it. Text the file colours
// itself stays readable in the dark and night palettes.
class HelpBox : public QWidget {
    Q_OBJECT
  public:
    explicit HelpBox(QWidget* parent = nullptr);

    // Loads the RTF file at `path` in place of what the window showed, sets
    // the title and shows the window. On failure the window stays as it was
    // and `error` (when given) says why.
    bool showHelp(const QString& path, const QString& title, QString* error = nullptr);

    void Command1_Click() { hide(); }

    QTextBrowser* RichTextBox1 = nullptr;
    QPushButton* Command1 = nullptr;

  protected:
    // A new palette recolours the text the help file coloured itself.
    void changeEvent(QEvent* event) override;
};

}  // namespace halvex
