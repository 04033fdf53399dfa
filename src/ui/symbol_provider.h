#pragma once

#include <QQuickImageProvider>

namespace boxlift {

/// Draws the icons: image://symbol/<name>/<rrggbb or aarrggbb> is the icon of that name in that
/// colour, drawn at the size in pixels that is asked for. Owned by the engine; any thread.
class SymbolProvider : public QQuickImageProvider {
public:
    SymbolProvider();

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace boxlift
