#include "ui/text_source.h"

#include <string_view>

#include <QDir>
#include <QKeySequence>

#include "model/size_option.h"
#include "model/target.h"
#include "ui/texts.h"

namespace boxlift {

namespace {

void append(QStringList& list, std::string_view text) {
    list.append(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

Mode modeOf(Job::ModeKind kind) {
    return kind == Job::ModeKind::Boxlift ? Mode::boxlift : Mode::reencode;
}

QString keysOf(QKeySequence::StandardKey command) {
    return QKeySequence(command).toString(QKeySequence::NativeText);
}

} // namespace

TextSource::TextSource(QObject* parent) : QObject(parent) {
    for (const Target target : allTargets) {
        append(m_targets, label(target));
        append(m_shortTargets, shortLabel(target));
    }
    for (const SizeOption size : allSizeOptions)
        append(m_sizes, label(size));
}

QString TextSource::percent(double progress) const {
    return percentText(progress);
}

QString TextSource::badge(Job::ModeKind mode) const {
    return badgeText(modeOf(mode));
}

QString TextSource::done(Job::ModeKind mode, double seconds) const {
    return doneText(modeOf(mode), seconds);
}

QString TextSource::openKeys() const {
    return keysOf(QKeySequence::Open);
}

QString TextSource::quitKeys() const {
    return keysOf(QKeySequence::Quit);
}

QString TextSource::folder(const QUrl& folder) const {
    return folderText(folder, QDir::homePath());
}

} // namespace boxlift
