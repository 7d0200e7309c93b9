// What texts that carry bytes are, byte by byte as their rules are worded.
#ifndef QBFOUNDATION_TESTS_SUPPORT_PLAINTEXTS_H
#define QBFOUNDATION_TESTS_SUPPORT_PLAINTEXTS_H

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

namespace plain {

/// The classical encoder's text: sixty characters a line, a backquote for 0; other lines stand around it.
inline std::string uuencoded(std::string_view bytes) {
    std::string text = "junk\nbegin 644 name\n";
    const auto digit = [](std::size_t value) {
        return value % 64 == 0 ? '`' : static_cast<char>(' ' + value % 64);
    };
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(45, bytes.size()))) {
        const std::string_view line = bytes.substr(0, 45);
        text += digit(line.size());
        for (std::size_t i = 0; i < (line.size() + 2) / 3 * 4; ++i) { // six bits each
            std::size_t pair = 0;
            for (std::size_t at : {i * 6 / 8, i * 6 / 8 + 1})
                pair = pair << 8 | (at < line.size() ? static_cast<unsigned char>(line[at]) : 0U);
            text += digit(pair >> (10 - i * 6 % 8));
        }
        text += '\n';
    }
    return text + "`\nend\nmore\n";
}

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
