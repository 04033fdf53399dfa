#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace boxlift {

/// The window's typeface and the sizes of its text, and how much larger than designed everything in
/// the window has to be where the user has asked the system for larger text. Main thread.
class SystemFont : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString family READ family NOTIFY changed FINAL)
    Q_PROPERTY(double scale READ scale NOTIFY changed FINAL)
    Q_PROPERTY(int title2 READ title2 NOTIFY changed FINAL)
    Q_PROPERTY(int headline READ headline NOTIFY changed FINAL)
    Q_PROPERTY(int body READ body NOTIFY changed FINAL)
    Q_PROPERTY(int caption READ caption NOTIFY changed FINAL)
    Q_PROPERTY(int caption2 READ caption2 NOTIFY changed FINAL)

public:
    explicit SystemFont(QObject* parent = nullptr);

    /// Inter, or the system's own where it is not installed.
    QString family() const { return m_family; }
    double scale() const { return m_scale; }

    /// Heights of text, in pixels.
    int title2() const { return scaled(17); }
    int headline() const { return scaled(13); }
    int body() const { return scaled(13); }
    int caption() const { return scaled(11); }
    int caption2() const { return scaled(10); }

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
