#include "print/OtherPrograms.h"

#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

QString outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    const bool ended = process.waitForFinished(120'000);
    if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        ADD_FAILURE() << program.toStdString() << ": "
                      << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList linesOfPage(const QString& pdf, int page) {
    const QString number = QString::number(page);
    return outputOf("pdftotext", {"-layout", "-f", number, "-l", number, pdf, "-"})
        .remove('\f')
        .split('\n', Qt::SkipEmptyParts);
}

QString propertyOf(const QString& pdf, const QString& name) {
    const QStringList lines = outputOf("pdfinfo", {pdf}).split('\n');
    for (const QString& line : lines)
        if (line.startsWith(name + ':'))
            return line.sliced(name.size() + 1).trimmed();
    return {};
}

std::vector<Word> wordsOfPage(const QString& pdf, int page) {
    static const QRegularExpression kWord(
        R"re(<word xMin="([\d.-]+)" yMin="([\d.-]+)" xMax="([\d.-]+)" yMax="([\d.-]+)">(.*?)</word>)re",
        QRegularExpression::DotMatchesEverythingOption);
    const QString number = QString::number(page);
    const QString html = outputOf("pdftotext", {"-bbox", "-f", number, "-l", number, pdf, "-"});
    std::vector<Word> words;
    for (auto it = kWord.globalMatch(html); it.hasNext();) {
        const auto match = it.next();
        const auto at = [&](int index) { return match.captured(index).toDouble(); };
        words.push_back({match.captured(5), QRectF(QPointF(at(1), at(2)), QPointF(at(3), at(4)))});
    }
    return words;
}

QString readByPython(const QString& script, const QString& file) {
    return outputOf("/usr/bin/python3", {"-X", "utf8", "-c", script, file});
}
