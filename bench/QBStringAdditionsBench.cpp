// HTML escaping and UTF-8 checking of strings, as operations that make their result.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <string>

#if QB_HAVE_GLIB
#include <glib.h>
#endif
#if QB_HAVE_QT
#include <QByteArray>
#include <QString>
#endif

namespace {

std::string repeated(const std::string &piece, std::size_t length) {
    std::string text;
    while (text.size() + piece.size() <= length)
        text += piece;
    return text;
}

using Measure = void (*)(benchmark::State &, const std::string &);

// Registers "group/row/size/..." for each peer. The text is made anew from `piece` for each size.
void addRows(const std::string &group, const std::string &row, const std::string &piece,
             std::initializer_list<std::pair<const char *, Measure>> peers) {
    for (const auto &[sizeName, size] : {std::pair("1KiB", 1024), std::pair("64KiB", 65'536)})
        for (const auto &[peer, measure] : peers) {
            const std::string text = repeated(piece, static_cast<std::size_t>(size));
            const auto run = [text, measure = measure](benchmark::State &state) {
                measure(state, text);
                state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
            };
            benchmark::RegisterBenchmark((group + "/" + row + "-" + sizeName + "/" + peer).c_str(), run);
        }
}

void escapeOurs(benchmark::State &state, const std::string &text) {
    const NSAutoreleasePool outerPool;
    NSString *const string = NSString::stringWith(text);
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(string->stringWithEscapedHtml());
    }
}

void checkOurs(benchmark::State &state, const std::string &text) {
    const NSAutoreleasePool outerPool;
    NSString *const string = NSString::stringWith(text);
    for (auto _ : state) {
        string->verifyUTF8();
        benchmark::ClobberMemory();
    }
}

#if QB_HAVE_GLIB
void escapeGlib(benchmark::State &state, const std::string &text) {
    for (auto _ : state) {
        char *const escaped = g_markup_escape_text(text.data(), static_cast<gssize>(text.size()));
        benchmark::DoNotOptimize(escaped);
        g_free(escaped);
    }
}

void checkGlib(benchmark::State &state, const std::string &text) {
    for (auto _ : state)
        benchmark::DoNotOptimize(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr));
}
#endif

#if QB_HAVE_QT
void escapeQt(benchmark::State &state, const std::string &text) {
    const QString string = QString::fromStdString(text);
    for (auto _ : state)
        benchmark::DoNotOptimize(string.toHtmlEscaped());
}

void checkQt(benchmark::State &state, const std::string &text) {
    const QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.isValidUtf8());
}
#endif

const std::initializer_list<std::pair<const char *, Measure>> kEscapers = {
    {"ours", &escapeOurs},
#if QB_HAVE_GLIB
    {"GLib", &escapeGlib},
#endif
#if QB_HAVE_QT
    {"Qt", &escapeQt},
#endif
};

const std::initializer_list<std::pair<const char *, Measure>> kCheckers = {
    {"ours", &checkOurs},
#if QB_HAVE_GLIB
    {"GLib", &checkGlib},
#endif
#if QB_HAVE_QT
    {"Qt", &checkQt},
#endif
};

const bool areRowsAdded = [] {
    const std::string harmless = "A sentence without any of the characters that have to be replaced, ";
    addRows("HtmlEscaping", "nothing", harmless, kEscapers);
    addRows("HtmlEscaping", "few", harmless + harmless + "and one & another. ", kEscapers);
    addRows("HtmlEscaping", "many", "<a href=\"x\">y & z</a> ", kEscapers);
    addRows("Utf8Checking", "ascii", harmless, kCheckers);
    addRows("Utf8Checking", "german",
            "Zw\xC3\xB6lf Boxk\xC3\xA4mpfer jagen \xC3\xBC"
            "ber den Deich. ",
            kCheckers);
    addRows("Utf8Checking", "cjk", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87\xE7\xAB\xA0",
            kCheckers);
    return true;
}();

} // namespace
