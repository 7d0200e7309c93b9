// Base64, MD5 and URL escapes.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBBase64OutputFilter.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBMD5OutputStream.h>

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#if QB_HAVE_OPENSSL
#include <openssl/evp.h>
#endif
#if QB_HAVE_QT
#include <QByteArray>
#endif

namespace {

using Measure = void (*)(benchmark::State &, const std::string &);
using Peers = std::initializer_list<std::pair<const char *, Measure>>;

void addRow(const std::string &row, const std::string &input, Peers peers) {
    for (const auto &[peer, measure] : peers) {
        const auto run = [input, measure = measure](benchmark::State &state) {
            measure(state, input);
            state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.size()));
        };
        benchmark::RegisterBenchmark((row + "/" + peer).c_str(), run);
    }
}

std::string someBytes(std::size_t length) {
    std::string bytes(length, '\0');
    std::uint32_t state = 1;
    for (char &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

std::string encoded(const std::string &bytes) {
    const NSAutoreleasePool pool;
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target);
    filter->writeBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    filter->flush();
    NSData *const data = target->targetData();
    return {static_cast<const char *>(data->bytes()), data->length()};
}

// A filter before a sink that has room for many small results or for one large one; it is made anew when the
// sink is full, as a part of what is measured.
template <Ref<QBBase64OutputFilter> (*make)(QBOutputStream *)>
void filterOurs(benchmark::State &state, const std::string &input) {
    const auto length = static_cast<std::uint32_t>(input.size());
    const std::uint32_t room = length / 3 * 4 + 8192;
    Ref<QBDataOutputStream> target;
    Ref<QBBase64OutputFilter> filter;
    for (auto _ : state) {
        if (!target || target->byteCounter() + length * 4 / 3 + 4 > room) {
            filter = nullptr; // as programs let go of one sink before they make the next
            target = nullptr;
            target = QBDataOutputStream::initWithCapacity(room);
            filter = make(target.get());
        }
        filter->writeBuffer(input.data(), length);
        filter->flush();
        benchmark::ClobberMemory();
    }
}

Ref<QBBase64OutputFilter> makeEncoder(QBOutputStream *target) {
    return QBBase64OutputFilter::initWithTarget(target);
}

Ref<QBBase64OutputFilter> makeDecoder(QBOutputStream *target) {
    return QBBase64OutputFilter::initWithTargetDecode(target, /*decode=*/YES);
}

void digestOurs(benchmark::State &state, const std::string &input) {
    const Ref<QBMD5OutputStream> stream = QBMD5OutputStream::init();
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        stream->writeBuffer(input.data(), static_cast<std::uint32_t>(input.size()));
        benchmark::DoNotOptimize(stream->md5HashData()->bytes());
    }
}

template <NSString *(NSString::*operation)() const>
void changeOurs(benchmark::State &state, const std::string &input) {
    const NSAutoreleasePool outerPool;
    NSString *const string = NSString::stringWith(input);
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize((string->*operation)());
    }
}

#if QB_HAVE_OPENSSL
void encodeOpenssl(benchmark::State &state, const std::string &input) {
    EVP_ENCODE_CTX *const context = EVP_ENCODE_CTX_new();
    std::vector<unsigned char> target(input.size() / 48 * 65 + 66);
    for (auto _ : state) {
        int length = 0;
        EVP_EncodeInit(context);
        EVP_EncodeUpdate(context, target.data(), &length,
                         reinterpret_cast<const unsigned char *>(input.data()),
                         static_cast<int>(input.size()));
        EVP_EncodeFinal(context, target.data() + length, &length);
        benchmark::ClobberMemory();
    }
    EVP_ENCODE_CTX_free(context);
}

// The form for a whole block, which is the faster one.
void encodeOpensslBlock(benchmark::State &state, const std::string &input) {
    std::vector<unsigned char> target(input.size() / 3 * 4 + 8);
    for (auto _ : state) {
        EVP_EncodeBlock(target.data(), reinterpret_cast<const unsigned char *>(input.data()),
                        static_cast<int>(input.size()));
        benchmark::ClobberMemory();
    }
}

void decodeOpensslBlock(benchmark::State &state, const std::string &input) {
    std::vector<unsigned char> target(input.size() / 4 * 3 + 8);
    for (auto _ : state) {
        EVP_DecodeBlock(target.data(), reinterpret_cast<const unsigned char *>(input.data()),
                        static_cast<int>(input.size()));
        benchmark::ClobberMemory();
    }
}

void digestOpenssl(benchmark::State &state, const std::string &input) {
    EVP_MD_CTX *const context = EVP_MD_CTX_new();
    EVP_MD *const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr); // once, as `EVP_md5` costs as much as a block
    for (auto _ : state) {
        unsigned char digest[16];
        EVP_DigestInit_ex(context, md5, nullptr);
        EVP_DigestUpdate(context, input.data(), input.size());
        EVP_DigestFinal_ex(context, digest, nullptr);
        benchmark::ClobberMemory();
    }
    EVP_MD_free(md5);
    EVP_MD_CTX_free(context);
}
#endif

#if QB_HAVE_QT
void escapeQt(benchmark::State &state, const std::string &input) {
    const QByteArray bytes(input.data(), static_cast<qsizetype>(input.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.toPercentEncoding("/?&=%+"));
}

void unescapeQt(benchmark::State &state, const std::string &input) {
    const QByteArray bytes(input.data(), static_cast<qsizetype>(input.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(QByteArray::fromPercentEncoding(bytes));
}
#endif

const Peers kEncoders = {
    {"ours", &filterOurs<&makeEncoder>},
#if QB_HAVE_OPENSSL
    {"evp-update", &encodeOpenssl},
    {"evp-block", &encodeOpensslBlock},
#endif
};

const Peers kDecoders = {
    {"ours", &filterOurs<&makeDecoder>},
#if QB_HAVE_OPENSSL
    {"evp-block", &decodeOpensslBlock},
#endif
};

const Peers kDigests = {
    {"ours", &digestOurs},
#if QB_HAVE_OPENSSL
    {"evp", &digestOpenssl},
#endif
};

const Peers kUrlEscapers = {
    {"ours", &changeOurs<&NSString::urlEscape>},
#if QB_HAVE_QT
    {"Qt", &escapeQt},
#endif
};

const Peers kUrlUnescapers = {
    {"ours", &changeOurs<&NSString::urlUnEscape>},
#if QB_HAVE_QT
    {"Qt", &unescapeQt},
#endif
};

std::string repeated(const std::string &piece, std::size_t length) {
    std::string text;
    while (text.size() < length)
        text += piece;
    return text;
}

const bool kRegistered = [] {
    for (const auto &[name, length] :
         {std::pair("64B", 64), std::pair("64KiB", 65'536), std::pair("4MiB", 4 << 20)}) {
        const std::string bytes = someBytes(static_cast<std::size_t>(length));
        addRow(std::string("Base64/encode-") + name, bytes, kEncoders);
        addRow(std::string("Base64/decode-") + name, encoded(bytes), kDecoders);
        addRow(std::string("MD5/") + name, bytes, kDigests);
    }
    for (const auto &[name, piece] : {std::pair("link", "index/chapter_3/some-page.html?sort=name&from=20 "),
                                      std::pair("german", "Gr\xC3\xBC\xC3\x9F"
                                                          "e aus M\xC3\xBCnchen "),
                                      std::pair("cjk", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E")}) {
        const std::string text = repeated(piece, 4096);
        addRow(std::string("URL/escape-") + name, text, kUrlEscapers);
    }
    addRow("URL/unescape-few", repeated("index/chapter_3/some-page.html%3Fsort%20name+", 4096),
           kUrlUnescapers);
    addRow("URL/unescape-many", repeated("%E6%97%A5%E6%9C%AC", 4096), kUrlUnescapers);
    return true;
}();

} // namespace
