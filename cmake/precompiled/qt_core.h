// Precompiled for every target that uses Qt: the Qt Core and standard
// headers most of our files include. Parsing Qt's headers took half of each
// file's compile.
#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
