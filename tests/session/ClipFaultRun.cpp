#include "ClipFaultRun.h"
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSet>

namespace orlo::testing {

namespace {
struct Copy {
    QString text;
    qint64 madeAt;
};

void sleepMs(int ms)
{
    VirtualSession::waitFor([] { return false; }, ms);
}
}  // namespace

ClipFaultRun::Figures ClipFaultRun::run(int cycles, quint32 seed)
{
    Figures figures;
    QRandomGenerator random(seed);
    // Every copy is checked to the end: the history must not trim any.
    QDir().mkpath(session_.configHome() + "/Orlo");
    QFile settings(session_.configHome() + "/Orlo/settings.json");
    if (!settings.open(QIODevice::WriteOnly) || settings.write("{\"clipboard.maxItems\": 100000}") < 0) {
        figures.failure = "cannot write the settings";
        return figures;
    }
    settings.close();
    const QString historyPath = session_.dataHome() + "/Orlo/Clipboard/history.json";

    QElapsedTimer clock;
    clock.start();
    QList<Copy> due;
    QSet<QString> lost;
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        QList<Copy> copies;
        OrloProcess orlo(session_);
        if (!orlo.waitForLine("started clipboard")) {
            figures.failure = QStringLiteral("Orlo did not start in cycle %1:\n%2").arg(cycle).arg(orlo.log());
            return figures;
        }
        for (int n = 1 + int(random.bounded(3)); n > 0; --n) {
            const QString text = QStringLiteral("fault %1-%2 %3").arg(cycle).arg(n).arg(random.generate(), 8, 16, QLatin1Char('0'));
            QProcess* xclip = session_.launch("xclip", {"-quiet", "-selection", "clipboard"});
            xclip->write(text.toUtf8());
            xclip->closeWriteChannel();
            if (!VirtualSession::waitFor([&] { return session_.output("xclip", {"-o", "-selection", "clipboard"}) == text; })) {
                figures.failure = QStringLiteral("xclip did not take the clipboard in cycle %1").arg(cycle);
                return figures;
            }
            copies << Copy{text, clock.elapsed()};
            ++figures.copies;
            // Polling sees a copy only if it stays on the clipboard until the next look: copies
            // replaced sooner are never recorded, and this run is about what happens after.
            if (!VirtualSession::waitFor([&] { return orlo.log().count(QStringLiteral("copy recorded")) >= copies.size(); })) {
                figures.failure = QStringLiteral("Orlo did not see a copy in cycle %1:\n%2").arg(cycle).arg(orlo.log());
                return figures;
            }
            sleepMs(int(random.bounded(1000)));
        }
        sleepMs(int(random.bounded(2000)));
        orlo.process().kill();
        const qint64 killedAt = clock.elapsed();
        orlo.process().waitForFinished(5000);
        ++figures.cycles;

        QFile file(historyPath);
        QSet<QString> saved;
        if (file.open(QIODevice::ReadOnly)) {
            QJsonParseError error;
            const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &error);
            if (error.error != QJsonParseError::NoError || !json.isArray()) {
                figures.failure = QStringLiteral("the history does not parse after cycle %1: %2").arg(cycle).arg(error.errorString());
                return figures;
            }
            for (const QJsonValue& item : json.array()) saved.insert(item.toObject().value("text").toString());
        }
        // A save comes a second after the last change of a burst: a copy is due once a quiet
        // moment long enough for it followed it or a later copy before the kill.
        bool quietAfter = false;
        for (qsizetype i = copies.size() - 1; i >= 0; --i) {
            const qint64 next = i + 1 < copies.size() ? copies[i + 1].madeAt : killedAt;
            quietAfter = quietAfter || next - copies[i].madeAt >= SavedAfterMs;
            if (quietAfter) due << copies[i];
        }
        // Every copy due so far must still be there: a restart must not lose older ones either.
        for (const Copy& copy : std::as_const(due))
            if (!saved.contains(copy.text)) lost.insert(copy.text);
        figures.due = int(due.size());
        figures.lost = int(lost.size());
    }
    return figures;
}

}  // namespace orlo::testing
