#include "worker/protocol/text.h"

#include <algorithm>

#include "model/utf8.h"

namespace boxlift::worker {

namespace {

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

} // namespace

bool isLine(std::string_view text) {
    if (std::ranges::any_of(text, isControl))
        return false;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

void makePrintable(std::string& text) {
    std::ranges::replace_if(text, isControl, '?');
}

} // namespace boxlift::worker
