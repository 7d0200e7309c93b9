// 16 MiB written and read by pieces of a size and by lines, to and from files and memory, and files that are
// replaced atomically. The peers are C streams without locks, the standard library's streams and Qt's
// devices.
//
// Single bytes go through what each library offers for loops: `getByte` and `putByte`, the macros of C
// streams.
//
// Reading by line makes what a program keeps of a line: a string of its library, or the bytes in a buffer of
// its own for C streams.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBDataInputStream.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBFileInputStream.h>
#include <QBFoundation/QBFileOutputStream.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#if QB_HAVE_QT
#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QString>
#endif

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kTotal = 16 << 20;

/// How the bytes are cut: each piece has that many, or is a line.
enum Cut : std::uint32_t { lines = 0, bytes = 1, words = 16, blocks = 65536 };

// --- What is written and read ---

const std::string &text() {
    static const std::string text = [] {
        std::string all;
        all.reserve(kTotal);
        for (unsigned number = 0; all.size() < kTotal; number += 7) {
            all.append(number % 100, static_cast<char>('a' + number % 26));
            all += '\n';
        }
        all.resize(kTotal - 1);
        return all + "\n";
    }();
    return text;
}

const std::vector<std::string_view> &linesOfText() {
    static const std::vector<std::string_view> lines = [] {
        std::vector<std::string_view> all;
        const std::string_view whole = text();
        for (std::size_t start = 0; start < whole.size();) {
            const std::size_t end = whole.find('\n', start);
            all.push_back(whole.substr(start, end - start));
            start = end + 1;
        }
        return all;
    }();
    return lines;
}

/// In memory, where that is to be had, so that no disk is measured.
std::string path(const char *name) {
    const fs::path directory = fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
    return directory / ("qb-streams-" + std::to_string(::getpid()) + name);
}

/// A file with the text, as long as the measurement lasts.
class TextFile {
public:
    TextFile() : path_(path("in")) { std::ofstream(path_, std::ios::binary) << text(); }
    ~TextFile() { fs::remove(path_); }
    const std::string &name() const { return path_; }

private:
    std::string path_;
};

// --- Writing ---

/// Writes the text to a new sink each time. A sink has `put` for a byte, `write` for a piece, `end`.
template <class Sink, Cut cut>
void write(benchmark::State &state) {
    const std::string &whole = text();
    const std::vector<std::string_view> &all = linesOfText();
    for (auto _ : state) {
        Sink sink;
        if constexpr (cut == bytes) {
            for (const char byte : whole)
                sink.put(byte);
        } else if constexpr (cut == lines) {
            for (const std::string_view line : all) {
                sink.write(line.data(), static_cast<std::uint32_t>(line.size()));
                sink.put('\n');
            }
        } else {
            for (std::uint32_t done = 0; done < kTotal; done += cut)
                sink.write(whole.data() + done, cut);
        }
        if (sink.end() != kTotal)
            state.SkipWithError("not all was written");
    }
    state.SetBytesProcessed(state.iterations() * kTotal);
}

std::uint32_t sizeOf(const std::string &file) {
    return static_cast<std::uint32_t>(fs::file_size(file));
}

class OurFileSink {
public:
    void put(char byte) { stream_->putByte(byte); }
    void write(const char *data, std::uint32_t length) { stream_->writeBuffer(data, length); }
    std::uint32_t end() {
        stream_->close();
        return sizeOf(path("out"));
    }

private:
    Ref<QBFileOutputStream> stream_ =
        QBFileOutputStream::initWithFile(NSString::initWith(path("out")).get(), /*atomically=*/NO);
};

class OurMemorySink {
public:
    void put(char byte) { stream_->putByte(byte); }
    void write(const char *data, std::uint32_t length) { stream_->writeBuffer(data, length); }
    std::uint32_t end() {
        const NSAutoreleasePool pool;
        return stream_->targetData()->length();
    }

private:
    Ref<QBDataOutputStream> stream_ = QBDataOutputStream::init();
};

class StdioSink {
public:
    explicit StdioSink(std::FILE *file) : file_(file) {}
    void put(char byte) { putc_unlocked(byte, file_); }
    void write(const char *data, std::uint32_t length) { ::fwrite_unlocked(data, 1, length, file_); }

protected:
    std::FILE *file_;
};

class StdioFileSink : public StdioSink {
public:
    StdioFileSink() : StdioSink(std::fopen(path("out").c_str(), "wb")) {}
    std::uint32_t end() {
        std::fclose(file_);
        return sizeOf(path("out"));
    }
};

class StdioMemorySink : public StdioSink {
public:
    StdioMemorySink() : StdioSink(nullptr) { file_ = ::open_memstream(&memory_, &size_); }
    ~StdioMemorySink() { std::free(memory_); }
    std::uint32_t end() {
        std::fclose(file_);
        return static_cast<std::uint32_t>(size_);
    }

private:
    char *memory_ = nullptr;
    std::size_t size_ = 0;
};

class StandardFileSink {
public:
    void put(char byte) { stream_.put(byte); }
    void write(const char *data, std::uint32_t length) { stream_.write(data, length); }
    std::uint32_t end() {
        stream_.close();
        return sizeOf(path("out"));
    }

private:
    std::ofstream stream_{path("out"), std::ios::binary};
};

class StandardMemorySink {
public:
    void put(char byte) { stream_.put(byte); }
    void write(const char *data, std::uint32_t length) { stream_.write(data, length); }
    std::uint32_t end() { return static_cast<std::uint32_t>(stream_.view().size()); }

private:
    std::ostringstream stream_;
};

#if QB_HAVE_QT
class QtFileSink {
public:
    QtFileSink() { file_.open(QIODevice::WriteOnly); }
    void put(char byte) { file_.putChar(byte); }
    void write(const char *data, std::uint32_t length) { file_.write(data, length); }
    std::uint32_t end() {
        file_.close();
        return sizeOf(path("out"));
    }

private:
    QFile file_{QString::fromStdString(path("out"))};
};

class QtMemorySink {
public:
    QtMemorySink() { buffer_.open(QIODevice::WriteOnly); }
    void put(char byte) { buffer_.putChar(byte); }
    void write(const char *data, std::uint32_t length) { buffer_.write(data, length); }
    std::uint32_t end() { return static_cast<std::uint32_t>(buffer_.data().size()); }

private:
    QBuffer buffer_;
};
#endif

// --- Reading ---

/// Reads the text from a new source each time. A source has `get` for a byte, `read` for a piece, `line`.
template <class Source, Cut cut>
void read(benchmark::State &state) {
    const TextFile file;
    static char piece[blocks];
    for (auto _ : state) {
        Source source(file.name());
        std::uint64_t done = 0;
        if constexpr (cut == bytes) {
            unsigned sum = 0;
            for (; done < kTotal; ++done)
                sum += static_cast<unsigned>(source.get());
            benchmark::DoNotOptimize(sum);
        } else if constexpr (cut == lines) {
            done = source.readLines();
        } else {
            for (std::uint32_t count; (count = source.read(piece, cut)) > 0 && done < kTotal;)
                done += count;
        }
        if (done != kTotal)
            state.SkipWithError("not all was read");
    }
    state.SetBytesProcessed(state.iterations() * kTotal);
}

class OurFileSource {
public:
    explicit OurFileSource(const std::string &name)
        : stream_(QBFileInputStream::initWithFile(NSString::initWith(name).get())) {}
    int get() { return stream_->getByte(); }
    std::uint32_t read(char *data, std::uint32_t length) {
        const int count = stream_->readBuffer(data, length);
        return count > 0 ? static_cast<std::uint32_t>(count) : 0;
    }
    // A pool for a hundred lines at a time, as a long loop has one.
    std::uint64_t readLines() {
        std::uint64_t done = 0;
        for (NSString *line = ""_ns; line;) {
            const NSAutoreleasePool pool;
            for (int i = 0; i < 100 && (line = stream_->readLine()); ++i)
                done += line->view() == "\n" ? 1 : line->cStringLength() + 1;
        }
        return done;
    }

private:
    Ref<QBFileInputStream> stream_;
};

class OurMemorySource {
public:
    explicit OurMemorySource(const std::string &) : stream_(QBDataInputStream::initWithData(data())) {}
    int get() { return stream_->getByte(); }
    std::uint32_t read(char *data, std::uint32_t length) {
        const int count = stream_->readBuffer(data, length);
        return count > 0 ? static_cast<std::uint32_t>(count) : 0;
    }

private:
    static NSData *data() {
        static const Ref<NSData> data = NSData::initWithBytes(text().data(), kTotal);
        return data;
    }

    Ref<QBDataInputStream> stream_;
};

class StdioSource {
public:
    explicit StdioSource(std::FILE *file) : file_(file) {}
    ~StdioSource() {
        std::free(line_);
        std::fclose(file_);
    }
    StdioSource(const StdioSource &) = delete;
    StdioSource &operator=(const StdioSource &) = delete;
    int get() { return getc_unlocked(file_); }
    std::uint32_t read(char *data, std::uint32_t length) {
        return static_cast<std::uint32_t>(::fread_unlocked(data, 1, length, file_));
    }
    std::uint64_t readLines() {
        std::uint64_t done = 0;
        for (ssize_t length; (length = ::getline(&line_, &size_, file_)) > 0;)
            done += static_cast<std::uint64_t>(length);
        return done;
    }

private:
    std::FILE *file_;
    char *line_ = nullptr;
    std::size_t size_ = 0;
};

class StdioFileSource : public StdioSource {
public:
    explicit StdioFileSource(const std::string &name) : StdioSource(std::fopen(name.c_str(), "rb")) {}
};

class StdioMemorySource : public StdioSource {
public:
    explicit StdioMemorySource(const std::string &)
        : StdioSource(::fmemopen(const_cast<char *>(text().data()), kTotal, "rb")) {}
};

template <class Stream>
class StandardSource {
public:
    template <class Of>
    explicit StandardSource(Of &of) : stream_(of) {}
    int get() { return stream_.get(); }
    std::uint32_t read(char *data, std::uint32_t length) {
        stream_.read(data, length);
        return static_cast<std::uint32_t>(stream_.gcount());
    }
    std::uint64_t readLines() {
        std::uint64_t done = 0;
        for (std::string line; std::getline(stream_, line);)
            done += line.size() + 1;
        return done;
    }

private:
    Stream stream_;
};

using StandardFileSource = StandardSource<std::ifstream>;

class StandardMemorySource : public StandardSource<std::istringstream &> {
public:
    explicit StandardMemorySource(const std::string &) : StandardSource(stream()) {}

private:
    static std::istringstream &stream() { // one, because each makes its copy of the text
        static std::istringstream stream(text());
        stream.clear();
        stream.seekg(0);
        return stream;
    }
};

#if QB_HAVE_QT
template <class Device>
class QtSource {
public:
    template <class Of>
    explicit QtSource(Of of) : device_(of) {
        device_.open(QIODevice::ReadOnly);
    }
    int get() {
        char byte = 0;
        device_.getChar(&byte);
        return byte;
    }
    std::uint32_t read(char *data, std::uint32_t length) {
        const qint64 count = device_.read(data, length);
        return count > 0 ? static_cast<std::uint32_t>(count) : 0;
    }
    std::uint64_t readLines() {
        std::uint64_t done = 0;
        for (QByteArray line; !(line = device_.readLine()).isEmpty();)
            done += static_cast<std::uint64_t>(line.size());
        return done;
    }

private:
    Device device_;
};

class QtFileSource : public QtSource<QFile> {
public:
    explicit QtFileSource(const std::string &name) : QtSource(QString::fromStdString(name)) {}
};

class QtMemorySource : public QtSource<QBuffer> {
public:
    explicit QtMemorySource(const std::string &) : QtSource(&bytes()) {}

private:
    static QByteArray &bytes() {
        static QByteArray bytes(text().data(), kTotal);
        return bytes;
    }
};
#endif

// --- Replacing a file ---

struct OurReplacement {
    static void replace(const std::string &name, std::string_view content) {
        const NSAutoreleasePool pool;
        QBFileOutputStream *const stream =
            QBFileOutputStream::streamWithFile(NSString::stringWith(name), /*atomically=*/YES);
        stream->writeBuffer(content.data(), static_cast<std::uint32_t>(content.size()));
        stream->close();
    }
};

#if QB_HAVE_QT
struct QtReplacement {
    static void replace(const std::string &name, std::string_view content) {
        QSaveFile file(QString::fromStdString(name));
        file.open(QIODevice::WriteOnly);
        file.write(content.data(), static_cast<qint64>(content.size()));
        file.commit();
    }
};
#endif

template <class Replacement>
void replace(benchmark::State &state) {
    const std::string name = path("replaced");
    const std::string_view content =
        std::string_view(text()).substr(0, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        Replacement::replace(name, content);
    if (sizeOf(name) != content.size())
        state.SkipWithError("not all was written");
    fs::remove(name);
}

// --- Rows ---

#define QB_ROWS(function, what, sinkOrSource, who)                                                           \
    BENCHMARK(function<sinkOrSource, bytes>)                                                                 \
        ->Name("Streams/" what "-by-1/" who)                                                                 \
        ->Unit(benchmark::kMillisecond);                                                                     \
    BENCHMARK(function<sinkOrSource, words>)                                                                 \
        ->Name("Streams/" what "-by-16/" who)                                                                \
        ->Unit(benchmark::kMillisecond);                                                                     \
    BENCHMARK(function<sinkOrSource, blocks>)                                                                \
        ->Name("Streams/" what "-by-64K/" who)                                                               \
        ->Unit(benchmark::kMillisecond)
#define QB_LINE_ROW(function, what, sinkOrSource, who)                                                       \
    BENCHMARK(function<sinkOrSource, lines>)                                                                 \
        ->Name("Streams/" what "-by-line/" who)                                                              \
        ->Unit(benchmark::kMillisecond)

QB_ROWS(write, "write-file", OurFileSink, "ours");
QB_ROWS(write, "write-file", StdioFileSink, "stdio");
QB_ROWS(write, "write-file", StandardFileSink, "iostreams");
QB_LINE_ROW(write, "write-file", OurFileSink, "ours");
QB_LINE_ROW(write, "write-file", StdioFileSink, "stdio");
QB_LINE_ROW(write, "write-file", StandardFileSink, "iostreams");
QB_ROWS(write, "write-memory", OurMemorySink, "ours");
QB_ROWS(write, "write-memory", StdioMemorySink, "stdio");
QB_ROWS(write, "write-memory", StandardMemorySink, "iostreams");
QB_LINE_ROW(write, "write-memory", OurMemorySink, "ours");
QB_LINE_ROW(write, "write-memory", StdioMemorySink, "stdio");
QB_LINE_ROW(write, "write-memory", StandardMemorySink, "iostreams");
QB_ROWS(read, "read-file", OurFileSource, "ours");
QB_ROWS(read, "read-file", StdioFileSource, "stdio");
QB_ROWS(read, "read-file", StandardFileSource, "iostreams");
QB_LINE_ROW(read, "read-file", OurFileSource, "ours");
QB_LINE_ROW(read, "read-file", StdioFileSource, "stdio");
QB_LINE_ROW(read, "read-file", StandardFileSource, "iostreams");
QB_ROWS(read, "read-memory", OurMemorySource, "ours");
QB_ROWS(read, "read-memory", StdioMemorySource, "stdio");
QB_ROWS(read, "read-memory", StandardMemorySource, "iostreams");
BENCHMARK(replace<OurReplacement>)->Name("Streams/replace-file/ours")->Arg(4096)->Arg(1 << 20);
#if QB_HAVE_QT
QB_ROWS(write, "write-file", QtFileSink, "qt");
QB_LINE_ROW(write, "write-file", QtFileSink, "qt");
QB_ROWS(write, "write-memory", QtMemorySink, "qt");
QB_LINE_ROW(write, "write-memory", QtMemorySink, "qt");
QB_ROWS(read, "read-file", QtFileSource, "qt");
QB_LINE_ROW(read, "read-file", QtFileSource, "qt");
QB_ROWS(read, "read-memory", QtMemorySource, "qt");
BENCHMARK(replace<QtReplacement>)->Name("Streams/replace-file/qsavefile")->Arg(4096)->Arg(1 << 20);
#endif

} // namespace
