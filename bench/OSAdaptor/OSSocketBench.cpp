// Sockets of the Unix domain: a round trip of 64 bytes, a million lines, single bytes, and a file that is
// sent in blocks of 64 KiB.
//
// Both ends are in one thread, so that no change of threads is measured: what is to be read is put into the
// socket's queue first, by plain calls and outside of the time, and what was sent is taken out of it. The
// peers are the plain calls of the system and, for lines, Qt's socket.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/OSAdaptor/OSSocketInputStream.h>
#include <QBFoundation/OSAdaptor/OSSocketOutputStream.h>
#include <QBFoundation/QBFileInputStream.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#if QB_HAVE_QT
#include <QByteArray>
#include <QCoreApplication>
#include <QLocalSocket>
#endif

namespace {

namespace fs = std::filesystem;

constexpr int kLines = 1'000'000;
constexpr std::size_t kMessage = 64;
constexpr std::size_t kBlock = 65536; // less than a socket's queue holds

/// Two ends of the library, connected.
struct OurPair {
    OurPair() { fs::remove(name()); }

    static std::string name() { return "/tmp/qb-bench-" + std::to_string(::getpid()); }

    NSAutoreleasePool pool;
    OSSocket *const server = OSSocket::serverSocketWithName(NSString::stringWith(name()));
    OSSocket *const near = OSSocket::clientSocketWithName(NSString::stringWith(name()));
    OSSocket *const far = OSSocket::acceptSocketFromListener(server);
};

/// Two plain ends.
struct PlainPair {
    PlainPair() { ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends); }
    ~PlainPair() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    PlainPair(const PlainPair &) = delete;
    PlainPair &operator=(const PlainPair &) = delete;

    int ends[2];
};

void put(int socket, std::string_view bytes) {
    while (!bytes.empty())
        bytes.remove_prefix(static_cast<std::size_t>(::send(socket, bytes.data(), bytes.size(), 0)));
}

void takeOut(int socket, std::size_t length) {
    static char block[kBlock];
    while (length > 0)
        length -= static_cast<std::size_t>(::recv(socket, block, sizeof block, 0));
}

// --- A round trip ---

void roundTrip(benchmark::State &state) {
    const OurPair pair;
    QBOutputStream *const ask = pair.near->getOutputStream(), *const answer = pair.far->getOutputStream();
    QBInputStream *const question = pair.far->getInputStream(), *const reply = pair.near->getInputStream();
    std::array<char, kMessage> message{};
    for (auto _ : state) {
        ask->writeBuffer(message.data(), kMessage);
        question->readBuffer(message.data(), kMessage);
        answer->writeBuffer(message.data(), kMessage);
        if (reply->readBuffer(message.data(), kMessage) != kMessage)
            state.SkipWithError("not all came back");
    }
}

void plainRoundTrip(benchmark::State &state) {
    const PlainPair pair;
    std::array<char, kMessage> message{};
    for (auto _ : state) {
        ::send(pair.ends[0], message.data(), kMessage, MSG_NOSIGNAL);
        ::recv(pair.ends[1], message.data(), kMessage, 0);
        ::send(pair.ends[1], message.data(), kMessage, MSG_NOSIGNAL);
        if (::recv(pair.ends[0], message.data(), kMessage, 0) != kMessage)
            state.SkipWithError("not all came back");
    }
}

// --- Lines ---

/// Pieces of whole lines, a million in all, each of which a queue holds.
struct Piece {
    std::string bytes;
    int lines = 0;
};

const std::vector<Piece> &pieces() {
    static const std::vector<Piece> pieces = [] {
        std::vector<Piece> all(1);
        for (int number = 0; number < kLines; ++number) {
            if (all.back().bytes.size() > kBlock - 200)
                all.emplace_back();
            all.back().bytes += "line " + std::to_string(number) + std::string(number % 50U, '.') + "\r\n";
            ++all.back().lines;
        }
        return all;
    }();
    return pieces;
}

/// A reader has `feed`, the descriptor of its other end, and `readLines` of as many as there are.
template <class Reader>
void readLines(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        Reader reader;
        std::size_t read = 0, sent = 0;
        for (const Piece &piece : pieces()) {
            put(reader.feed(), piece.bytes);
            sent += piece.bytes.size();
            state.ResumeTiming();
            read += reader.readLines(piece.lines);
            state.PauseTiming();
        }
        if (read != sent)
            state.SkipWithError("not all was read");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

class OurReader {
public:
    int feed() const { return pair_.far->socketHandle(); }
    std::size_t readLines(int count) {
        const NSAutoreleasePool pool;
        std::size_t bytes = 0;
        for (; count > 0; --count)
            bytes += pair_.near->readLine()->cStringLength() + 2;
        return bytes;
    }

private:
    OurPair pair_;
};

#if QB_HAVE_QT
class QtReader {
public:
    QtReader() {
        static int argumentCount = 1;
        static char name[] = "bench";
        static char *arguments[] = {name, nullptr};
        static const QCoreApplication application(argumentCount, arguments);
        socket_.setSocketDescriptor(::dup(pair_.ends[1]));
    }
    int feed() const { return pair_.ends[0]; }
    std::size_t readLines(int count) {
        std::size_t bytes = 0;
        for (; count > 0; --count) {
            while (!socket_.canReadLine())
                socket_.waitForReadyRead(-1);
            const QByteArray line = socket_.readLine();
            bytes += static_cast<std::size_t>(line.size());
        }
        return bytes;
    }

private:
    PlainPair pair_;
    QLocalSocket socket_;
};
#endif

// --- Bytes ---

void readBytes(benchmark::State &state) {
    const OurPair pair;
    QBInputStream *const stream = pair.near->getInputStream();
    const std::string bytes(kBlock, 'x');
    for (auto _ : state) {
        state.PauseTiming();
        put(pair.far->socketHandle(), bytes);
        state.ResumeTiming();
        int sum = 0;
        for (std::size_t count = 0; count < kBlock; ++count)
            sum += stream->readByte();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBlock));
}

void readPlainBytes(benchmark::State &state) {
    const PlainPair pair;
    const std::string bytes(kBlock, 'x');
    for (auto _ : state) {
        state.PauseTiming();
        put(pair.ends[0], bytes);
        state.ResumeTiming();
        int sum = 0;
        for (std::size_t count = 0; count < kBlock; ++count) {
            char byte = 0;
            ::recv(pair.ends[1], &byte, 1, 0);
            sum += byte;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBlock));
}

// --- A file ---

/// A file of 16 MiB in memory, where that is to be had, as long as the measurement lasts.
class File {
public:
    static constexpr std::size_t kSize = 16 << 20;

    File() { std::ofstream(name(), std::ios::binary) << std::string(kSize, 'x'); }
    ~File() { fs::remove(name()); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    static std::string name() {
        return (fs::is_directory("/dev/shm") ? "/dev/shm/qb-socket-" : "/tmp/qb-socket-") +
               std::to_string(::getpid());
    }
};

void sendFile(benchmark::State &state) {
    const File file;
    const OurPair pair;
    QBOutputStream *const target = pair.near->getOutputStream();
    static char block[kBlock];
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        QBFileInputStream *const source =
            QBFileInputStream::streamWithFile(NSString::stringWith(File::name()));
        for (int count; (count = source->readBuffer(block, kBlock)) > 0;) {
            target->writeBuffer(block, static_cast<std::uint32_t>(count));
            takeOut(pair.far->socketHandle(), static_cast<std::size_t>(count));
        }
        source->close();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(File::kSize));
}

void sendPlainFile(benchmark::State &state) {
    const File file;
    const PlainPair pair;
    static char block[kBlock];
    for (auto _ : state) {
        const int source = ::open(File::name().c_str(), O_RDONLY | O_CLOEXEC);
        for (ssize_t count; (count = ::read(source, block, kBlock)) > 0;) {
            ::write(pair.ends[0], block, static_cast<std::size_t>(count));
            takeOut(pair.ends[1], static_cast<std::size_t>(count));
        }
        ::close(source);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(File::kSize));
}

BENCHMARK(roundTrip)->Name("Sockets/round-trip-of-64/ours");
BENCHMARK(plainRoundTrip)->Name("Sockets/round-trip-of-64/send and recv");
BENCHMARK(readLines<OurReader>)->Name("Sockets/read-line/ours")->Unit(benchmark::kMillisecond);
#if QB_HAVE_QT
BENCHMARK(readLines<QtReader>)->Name("Sockets/read-line/Qt")->Unit(benchmark::kMillisecond);
#endif
BENCHMARK(readBytes)->Name("Sockets/read-byte/ours");
BENCHMARK(readPlainBytes)->Name("Sockets/read-byte/recv");
BENCHMARK(sendFile)->Name("Sockets/send-file/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(sendPlainFile)->Name("Sockets/send-file/read and write")->Unit(benchmark::kMillisecond);

} // namespace
