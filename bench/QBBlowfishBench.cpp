// Blowfish in cipher-block chaining, and its key schedule.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/QBBlowfishOutputFilter.h>
#include <QBFoundation/QBDataOutputStream.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#if QB_HAVE_OPENSSL
#define OPENSSL_SUPPRESS_DEPRECATED // what was put in its place calls these functions
#include <openssl/blowfish.h>
#endif

namespace {

constexpr std::string_view kKey = "sixteen byte key";

NSData *key() {
    return NSData::dataWithBytes(kKey.data(), kKey.size());
}

// A filter before a sink that has room for many small writes or for one large one; both are made anew when
// the sink is full, as a part of what is measured.
void filterOurs(benchmark::State &state, BOOL decrypt) {
    const NSAutoreleasePool pool;
    NSData *const key = ::key();
    const std::string input(static_cast<std::size_t>(state.range(0)), 'x');
    const auto length = static_cast<std::uint32_t>(input.size());
    const std::uint32_t room = length + 1'048'576;
    Ref<QBDataOutputStream> target;
    Ref<QBBlowfishOutputFilter> filter;
    for (auto _ : state) {
        if (!target || target->byteCounter() + length + 8 > room) {
            target = QBDataOutputStream::initWithCapacity(room);
            filter = QBBlowfishOutputFilter::initWithKey(key, decrypt, target, /*randomSeed=*/1);
        }
        filter->writeBuffer(input.data(), length);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length);
}

void scheduleOurs(benchmark::State &state) {
    const NSAutoreleasePool pool;
    NSData *const key = ::key();
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            QBBlowfishOutputFilter::initWithKey(key, /*decrypt=*/YES, target, /*randomSeed=*/1));
}

#if QB_HAVE_OPENSSL
void setKey(BF_KEY &key) {
    BF_set_key(&key, kKey.size(), reinterpret_cast<const unsigned char *>(kKey.data()));
}

void filterOpenssl(benchmark::State &state, int direction) {
    const std::vector<unsigned char> input(static_cast<std::size_t>(state.range(0)), 'x');
    std::vector<unsigned char> target(input.size());
    unsigned char chain[8] = {};
    BF_KEY key;
    setKey(key);
    for (auto _ : state) {
        BF_cbc_encrypt(input.data(), target.data(), static_cast<long>(input.size()), &key, chain, direction);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void scheduleOpenssl(benchmark::State &state) {
    BF_KEY key;
    for (auto _ : state) {
        setKey(key);
        benchmark::DoNotOptimize(key);
    }
}
#endif

const bool kRegistered = [] {
    for (const auto &[row, decrypt] :
         {std::pair("Blowfish/encipher", NO), std::pair("Blowfish/decipher", YES)}) {
        const auto add = [row = row](const char *peer, auto measure) {
            benchmark::RegisterBenchmark((std::string(row) + "/" + peer).c_str(), measure)
                ->Arg(64)
                ->Arg(65'536)
                ->Arg(4 << 20);
        };
        add("ours", [decrypt = decrypt](benchmark::State &state) { filterOurs(state, decrypt); });
#if QB_HAVE_OPENSSL
        const int direction = decrypt ? BF_DECRYPT : BF_ENCRYPT;
        add("OpenSSL", [direction](benchmark::State &state) { filterOpenssl(state, direction); });
#endif
    }
    benchmark::RegisterBenchmark("Blowfish/key/ours", &scheduleOurs);
#if QB_HAVE_OPENSSL
    benchmark::RegisterBenchmark("Blowfish/key/OpenSSL", &scheduleOpenssl);
#endif
    return true;
}();

} // namespace
