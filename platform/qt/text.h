// Text between the logic and the widgets: UTF-8 for what is said to the operator, Latin-1 for the
// display and the wire.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace ampdesk {

inline QString from_utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline QString from_latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace ampdesk
