#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace boxlift {

/// The window's typeface, and how much larger than designed everything in the window has to be
/// where the user has asked the system for larger text. Main thread.
class SystemFont : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString family READ family NOTIFY changed FINAL)
    Q_PROPERTY(double scale READ scale NOTIFY changed FINAL)
    Q_PROPERTY(int body READ body NOTIFY changed FINAL)
    Q_PROPERTY(int title READ title NOTIFY changed FINAL)

public:
    explicit SystemFont(QObject* parent = nullptr);

    /// Inter, or the system's own where it is not installed.
    QString family() const { return m_family; }
    double scale() const { return m_scale; }
    /// In pixels: of most of what is written in the window, and of what is written largest.
    int body() const;
    int title() const;

    /// The factor for a system font of this height; 1 for the heights that desktops come with.
    static double scaleFor(double pixels);

    /// Draws letters as they will be in the window's first frame, somewhere out of sight: fonts are
    /// opened, and their letters kept, before the frame would have to wait for that.
    static void prepare();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void changed();

private:
    void refresh();
    int scaled(int pixels) const;

    QString m_family;
    double m_scale = 1;
};

} // namespace boxlift
