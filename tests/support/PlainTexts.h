// What texts that carry bytes are, byte by byte as their rules are worded.
#ifndef QBFOUNDATION_TESTS_SUPPORT_PLAINTEXTS_H
#define QBFOUNDATION_TESTS_SUPPORT_PLAINTEXTS_H

#include <cctype>
#include <string>
#include <string_view>

namespace plain {

inline std::string urlUnescaped(std::string_view text) {
    std::string result;
    const auto digit = [](char c) {
        return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : c - 87;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i] == '+' ? ' ' : text[i];
            continue;
        }
        if (i + 1 < text.size())
            result +=
                static_cast<char>(digit(text[i + 1]) * 16 + (i + 2 < text.size() ? digit(text[i + 2]) : 0));
        i += 2;
    }
    return result;
}

inline std::string urlEscaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) || std::ispunct(byte))
            result += character;
        else
            result += {'%', static_cast<char>('0' + byte / 16), static_cast<char>('0' + byte % 16)};
    }
    return result;
}

} // namespace plain

#endif
