#pragma once

#include <QApplication>
#include <QFont>

namespace boxlift::test {

/// The user's size of text, for as long as this lives.
class FontSize {
public:
    explicit FontSize(int pixels) { set(pixels); }
    ~FontSize() { QApplication::setFont(m_before); }
    FontSize(const FontSize&) = delete;
    FontSize& operator=(const FontSize&) = delete;

    void set(int pixels) {
        QFont font = m_before;
        font.setPixelSize(pixels);
        QApplication::setFont(font);
    }

private:
    const QFont m_before = QApplication::font();
};

} // namespace boxlift::test
