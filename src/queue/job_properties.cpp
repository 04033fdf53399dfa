#include "queue/job.h"

#include "queue/file_url.h"

namespace boxlift {

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

Job::ModeKind kind(Mode mode) {
    return mode == Mode::boxlift ? Job::ModeKind::Boxlift : Job::ModeKind::Reencode;
}

} // namespace

QUrl Job::url() const {
    return fileUrl(m_path);
}

QString Job::fileName() const {
    return text(m_path.filename().native());
}

QString Job::summary() const {
    return m_info ? text(m_info->summary()) : QString();
}

QUrl Job::output() const {
    const Done* done = std::get_if<Done>(&m_state);
    return done ? fileUrl(done->output) : QUrl();
}

Job::ModeKind Job::usedMode() const {
    const Done* done = std::get_if<Done>(&m_state);
    return done ? kind(done->mode) : ModeKind::Reencode;
}

double Job::seconds() const {
    const Done* done = std::get_if<Done>(&m_state);
    return done ? done->seconds : 0.0;
}

QString Job::message() const {
    const Failed* failed = std::get_if<Failed>(&m_state);
    return failed ? text(failed->message) : QString();
}

/// What is not a position in the list, as a picker without a choice has it, changes nothing.
void Job::setTargetIndex(int index) {
    if (index >= 0 && index < static_cast<int>(allTargets.size()))
        setTarget(allTargets.at(static_cast<std::size_t>(index)));
}

void Job::setSizeIndex(int index) {
    if (index >= 0 && index < static_cast<int>(allSizeOptions.size()))
        setSize(allSizeOptions.at(static_cast<std::size_t>(index)));
}

QString Job::blockerText() const {
    return text(blocker().value_or(std::string()));
}

bool Job::hasPlan() const {
    return plan().has_value();
}

Job::ModeKind Job::planMode() const {
    return kind(plan().value_or(Plan{}).mode);
}

QString Job::planDetail() const {
    return text(plan().value_or(Plan{}).detail);
}

} // namespace boxlift
