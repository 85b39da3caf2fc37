#pragma once

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include "tests/support/child_process.h"
#include "tests/support/scripted_server.h"

namespace halvex::testing {

// Debian's ser2net as a serial device server in front of `device`, with a
// configuration of its own on a free port of 127.0.0.1, in the foreground:
// it neither needs nor touches a ser2net the system runs. stop() and start()
// take it away and bring it back on the same port.
class Ser2netProcess {
  public:
    enum class Accepter { Raw, Rfc2217 };

    static QString program() {
        return QStandardPaths::findExecutable(
            QStringLiteral("ser2net"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")});
    }

    Ser2netProcess(const QString& device, Accepter accepter)
        : accepter_(accepter), port_(closedPort()) {
        const QString config = directory_.filePath(QStringLiteral("ser2net.yaml"));
        QFile file(config);
        if (file.open(QIODevice::WriteOnly)) {
            const QString kind =
                accepter == Accepter::Rfc2217 ? QStringLiteral("telnet(rfc2217),") : QString();
            file.write(QStringLiteral("connection: &unit\n"
                                      "  accepter: %1tcp,127.0.0.1,%2\n"
                                      "  connector: serialdev,%3,9600n81,local\n")
                           .arg(kind)
                           .arg(port_)
                           .arg(device)
                           .toUtf8());
            file.close();
        }
        // -n: foreground; -u: no UUCP lock files; -P: a pid file of its own.
        process_.setProgram(program());
        process_.setArguments({QStringLiteral("-n"), QStringLiteral("-u"), QStringLiteral("-c"),
                               config, QStringLiteral("-P"),
                               directory_.filePath(QStringLiteral("ser2net.pid"))});
        process_.setProcessChannelMode(QProcess::MergedChannels);
        endWithParent(process_);
        start();
    }
    ~Ser2netProcess() { stop(); }
    Ser2netProcess(const Ser2netProcess&) = delete;
    Ser2netProcess& operator=(const Ser2netProcess&) = delete;

    // True once it listens.
    bool start() {
        process_.start();
        if (!process_.waitForStarted(5000)) {
            return false;
        }
        listening_ = QTest::qWaitFor([this] { return listens(); }, 5000);
        return listening_;
    }
    void stop() {
        stopChild(process_);
        listening_ = false;
    }
    bool listening() const { return listening_; }
    // What the console opens: socket://127.0.0.1:PORT or rfc2217://...
    QString device() const {
        return QStringLiteral("%1://127.0.0.1:%2")
            .arg(accepter_ == Accepter::Rfc2217 ? QStringLiteral("rfc2217")
                                                : QStringLiteral("socket"))
            .arg(port_);
    }
    QString output() { return QString::fromLocal8Bit(process_.readAll()); }

  private:
    // Looks at the kernel's table of listening sockets rather than connect,
    // which ser2net would take for a client and open the device for.
    bool listens() const {
        QFile table(QStringLiteral("/proc/net/tcp"));
        if (!table.open(QIODevice::ReadOnly)) {
            return false;
        }
        const QByteArray local =
            QStringLiteral("0100007F:%1").arg(port_, 4, 16, QLatin1Char('0')).toUpper().toLatin1();
        for (const QByteArray& line : table.readAll().split('\n')) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            if (fields.size() > 3 && fields[1] == local && fields[3] == "0A") {
                return true;
            }
        }
        return false;
    }

    QTemporaryDir directory_;
    Accepter accepter_;
    quint16 port_;
    QProcess process_;
    bool listening_ = false;
};

}  // namespace halvex::testing
