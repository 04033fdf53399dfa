#pragma once

#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include "queue/job.h"

namespace boxlift {

/// Hands the texts that are not a job's own to QML. The lists are in the order of the choices.
class TextSource : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(Texts)
    QML_SINGLETON
    Q_PROPERTY(QStringList targets READ targets CONSTANT FINAL)
    Q_PROPERTY(QStringList shortTargets READ shortTargets CONSTANT FINAL)
    Q_PROPERTY(QStringList sizes READ sizes CONSTANT FINAL)
    Q_PROPERTY(QString openKeys READ openKeys CONSTANT FINAL)
    Q_PROPERTY(QString quitKeys READ quitKeys CONSTANT FINAL)

public:
    explicit TextSource(QObject* parent = nullptr);

    QStringList targets() const { return m_targets; }
    QStringList shortTargets() const { return m_shortTargets; }
    QStringList sizes() const { return m_sizes; }

    // The keys of the commands, as this system writes them.
    QString openKeys() const;
    QString quitKeys() const;

    Q_INVOKABLE QString percent(double progress) const;
    Q_INVOKABLE QString badge(boxlift::Job::ModeKind mode) const;
    Q_INVOKABLE QString done(boxlift::Job::ModeKind mode, double seconds) const;
    Q_INVOKABLE QString folder(const QUrl& folder) const;

private:
    QStringList m_targets;
    QStringList m_shortTargets;
    QStringList m_sizes;
};

} // namespace boxlift
