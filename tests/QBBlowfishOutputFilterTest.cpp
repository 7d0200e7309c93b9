#include "support/CommandOutput.h"
#include "support/DirectoryFixture.h"
#include "support/EchoingTarget.h"

#include <array>
#include <ctime>

using QBBlowfishOutputFilterTest = DirectoryFixture;
using Filter = QBBlowfishOutputFilter;
using Block = std::array<std::uint32_t, 2>;

static std::string fromHex(std::string_view digits) {
    return bytesOf(NSString::stringWith(digits)->dataFromHexString());
}

// Writes the bytes in pieces of `piece` and closes the stream.
static void writeAll(QBOutputStream *stream, std::string_view bytes, std::size_t piece) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        stream->writeBuffer(bytes.data(), static_cast<std::uint32_t>(std::min(piece, bytes.size())));
    stream->close();
}

static std::string converted(id key, BOOL decrypt, std::string_view bytes, std::size_t piece = SIZE_MAX,
                             std::uint32_t seed = 7) {
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    const Ref<Filter> filter = Filter::initWithKey(key, decrypt, target, seed);
    writeAll(filter, bytes, piece);
    return bytesOf(target->targetData());
}

static std::string enciphered(id key, std::string_view bytes, std::size_t piece = SIZE_MAX,
                              std::uint32_t seed = 7) {
    return converted(key, /*decrypt=*/NO, bytes, piece, seed);
}

static std::string deciphered(id key, std::string_view bytes, std::size_t piece = SIZE_MAX) {
    return converted(key, /*decrypt=*/YES, bytes, piece);
}

static Filter *cipher(id key) {
    return Filter::streamWithKey(key, /*decrypt=*/YES, QBDataOutputStream::stream());
}

static Block convertedBlock(Filter *filter, Block block, SEL operation) {
    std::copy(block.begin(), block.end(), filter->data());
    send<void>(filter, operation);
    return {filter->data()[0], filter->data()[1]};
}

constexpr std::string_view kText = "Many hands make light work.";
// That text under "sixteen byte key": made of what `openssl enc -bf-cbc` gives for it.
constexpr const char *kStream = "0011223344556677da947dd63a4f63670cd18aa47325cfb8"
                                "0d61bdface9e14cebaaa932ee523e89188fa8b7691d306f9";

static NSString *sixteen() {
    return "sixteen byte key"_ns;
}

// Vectors that were published with the cipher.
TEST_F(QBBlowfishOutputFilterTest, BlocksAreThoseOfThePublishedVectors) {
    const std::tuple<const char *, Block, Block> rows[] = {
        {"0000000000000000", {0, 0}, {0x4EF99745, 0x6198DD78}},
        {"FEDCBA9876543210", {0x01234567, 0x89ABCDEF}, {0x0ACEAB0F, 0xC6A0A28D}},
        {"F0", {0xFEDCBA98, 0x76543210}, {0xF9AD597C, 0x49DB005E}},
        {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677",
         {0xFEDCBA98, 0x76543210},
         {0x05044B62, 0xFA52D080}},
    };
    for (const auto &[key, plain, secret] : rows) {
        Filter *const filter = cipher(dataOf(fromHex(key)));
        EXPECT_EQ(convertedBlock(filter, plain, "_blowfishEncryptBlock"_sel), secret) << key;
        EXPECT_EQ(convertedBlock(filter, secret, "_blowfishDecryptBlock"_sel), plain) << key;
    }
}

TEST_F(QBBlowfishOutputFilterTest, AStreamOfAnotherMakerIsDecipheredInPiecesOfAnySize) {
    const std::string stream = fromHex(kStream);
    for (std::size_t piece = 1; piece <= stream.size(); ++piece)
        EXPECT_EQ(deciphered(sixteen(), stream, piece), kText) << piece;
}

// The header is a block of the chain that begins with zeros: one run deciphers all of a stream. Without the
// chain, each block comes out with the secret one before it.
TEST_F(QBBlowfishOutputFilterTest, OpenSslDeciphersStreamsUnderRandomKeys) {
    const std::string openssl = "openssl enc -d -provider legacy -provider default -nopad ";
    const char *const modes[] = {"-bf-cbc -iv 0000000000000000 -K ", "-bf-ecb -K "};
    if (outputOf(openssl + modes[0] + "00 </dev/null 2>&1 && echo yes").empty())
        GTEST_SKIP() << "openssl is not installed, or has no Blowfish";
    Random random;
    std::string commands[] = {"true", "true"}, texts[40], chains;
    for (std::uint32_t i = 0; i < std::size(texts); ++i) {
        // OpenSSL's keys have 16 bytes, and the cipher repeats shorter ones.
        const std::string key = randomBytes(random, std::size_t{1} << random.below(5));
        const std::string longKey = times(16 / key.size(), key);
        texts[i] = randomBytes(random, random.length(12));
        const std::string file = std::to_string(i);
        const std::string stream = enciphered(dataOf(key), texts[i], 1 + random.below(100), /*seed=*/i + 1);
        directory_.write(file, stream);
        chains += std::string(8, '\0') + stream.substr(0, stream.size() - 8);
        for (std::size_t mode = 0; mode < 2; ++mode)
            commands[mode] += " && " + openssl + modes[mode] + describe(string(longKey)->asHexString()) +
                              " -in " + directory_ / file;
    }
    std::string streams = outputOf(commands[0]), blocks = outputOf(commands[1]);
    ASSERT_EQ(blocks.size(), chains.size());
    for (std::size_t i = 0; i < blocks.size(); ++i)
        blocks[i] = static_cast<char>(blocks[i] ^ chains[i]);
    EXPECT_TRUE(blocks == streams);
    for (std::uint32_t i = 0; i < std::size(texts); ++i) {
        const std::size_t size = 8 * (texts[i].size() / 8 + 3);
        ASSERT_GE(streams.size(), size);
        EXPECT_EQ(streams.substr(0, 4), std::string({0, 0, 0, static_cast<char>(i + 1)}));
        EXPECT_EQ(streams.substr(8, texts[i].size()), texts[i]);
        EXPECT_EQ(streams[size - 1] & 15U, texts[i].size() % 8);
        streams.erase(0, size);
    }
    EXPECT_EQ(streams, "");
}

// Short ones come back in fuzz/EncipheredFrames.cpp.
TEST_F(QBBlowfishOutputFilterTest, WhatWasEncipheredInMoreThanOneWriteIsReadAgain) {
    const std::string text(1'000'003, 'x');
    const std::string stream = enciphered(sixteen(), text);
    EXPECT_TRUE(deciphered(sixteen(), stream) == text);
    EXPECT_TRUE(enciphered(sixteen(), text, 13) == stream);
}

TEST_F(QBBlowfishOutputFilterTest, ATargetThatTellsWritesApartSeesEachBlock) {
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    const Ref<Filter> encoder = Filter::initWithKey(sixteen(), /*decrypt=*/NO, target, /*randomSeed=*/1);
    EXPECT_EQ(writesOf(target).size(), 1u); // the header, at once
    encoder->writeBuffer(kText.data(), 17);
    encoder->flush(); // not of what is no block yet
    EXPECT_EQ(writesOf(target).size(), 3u);
    encoder->close();
    encoder->close();
    EXPECT_EQ(writesOf(target).size(), 5u);
}

TEST_F(QBBlowfishOutputFilterTest, WhatItsTargetWritesToTheFilterGoesBehindTheBlock) {
    const Ref<EchoingTarget> target = Ref<EchoingTarget>::adopt(new EchoingTarget);
    const Ref<Filter> encoder = Filter::initWithKey(sixteen(), /*decrypt=*/NO, target, /*randomSeed=*/1);
    encoder->writeBuffer(kText.data(), 5);
    target->echo = encoder;
    encoder->writeBuffer(kText.data() + 5, 10);
    encoder->close();
    EXPECT_EQ(deciphered(sixteen(), target->bytes), "Many han(e)ds make");
}

// The stream's block of that number, as it was before it was enciphered.
static Block plainBlock(std::string_view stream, std::size_t number) {
    const auto stored = [stream](std::size_t index) {
        Block block{};
        for (std::size_t i = 0; i < 8; ++i)
            block[i / 4] = block[i / 4] << 8 | static_cast<unsigned char>(stream[index * 8 + i]);
        return block;
    };
    const Block block = convertedBlock(cipher(sixteen()), stored(number), "_blowfishDecryptBlock"_sel);
    const Block before = number == 0 ? Block{} : stored(number - 1);
    return {block[0] ^ before[0], block[1] ^ before[1]};
}

TEST_F(QBBlowfishOutputFilterTest, WhatIsUnusedInTheLastBlocksIsRandom) {
    const std::string stream = enciphered(sixteen(), "abc", SIZE_MAX, 9);
    ASSERT_EQ(stream.size(), 24u);
    std::srand(9);
    std::uint32_t numbers[5];
    std::generate(std::begin(numbers), std::end(numbers), [] { return std::rand(); });
    EXPECT_EQ(plainBlock(stream, 0), (Block{9, numbers[0]}));
    EXPECT_EQ(plainBlock(stream, 1), (Block{0x61626300 | (numbers[1] & 255), numbers[2]}));
    EXPECT_EQ(plainBlock(stream, 2), (Block{numbers[3], (numbers[4] & ~15U) + 3}));
}

TEST_F(QBBlowfishOutputFilterTest, TheHeaderIsTheSeedAndItsFirstRandomNumber) {
    const auto headerOf = [](std::uint32_t seed) {
        return plainBlock(enciphered(sixteen(), "", SIZE_MAX, seed), 0);
    };
    std::srand(0xFFFFFFFFu);
    const Block expected{0xFFFFFFFFu, static_cast<std::uint32_t>(std::rand())};
    EXPECT_EQ(headerOf(0xFFFFFFFFu), expected);
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    const std::uint32_t time = headerOf(0)[0];
    EXPECT_TRUE(before <= time && time <= before + 60) << time;
}

TEST_F(QBBlowfishOutputFilterTest, ASeedSaysNothingOfLaterRandomNumbers) {
    const auto expectStrange = [] { // what comes now, wherever it stands among the numbers of the seed
        const int later[] = {std::rand(), std::rand(), std::rand()};
        std::srand(9);
        std::vector<int> numbers(300);
        std::generate(numbers.begin(), numbers.end(), std::rand);
        EXPECT_EQ(std::search(numbers.begin(), numbers.end(), later, later + 3), numbers.end());
    };
    enciphered("key"_ns, kText, SIZE_MAX, 9);
    expectStrange();

    struct Thrower : QBOutputStream { // after the header
        void _writeBuffer(const void *, std::uint32_t) override {
            if (++writes > 1)
                throw InternalInconsistencyException("no");
        }
        int writes = 0;
    };
    const Ref<Thrower> thrower = Ref<Thrower>::adopt(new Thrower);
    EXPECT_THROW(Filter::streamWithTarget(thrower.get(), /*randomSeed=*/9)->close(),
                 InternalInconsistencyException);
    expectStrange();
}

TEST_F(QBBlowfishOutputFilterTest, KeysAreTheBytesOfDataOrOfATextUpToThe72nd) {
    const std::string stream = enciphered("15"_ns, kText);
    EXPECT_EQ(deciphered(number(15), stream), kText);
    const std::string longKey(72, 'k');
    EXPECT_EQ(deciphered(dataOf(longKey + "z"), enciphered(dataOf(longKey), kText)), kText);
    EXPECT_NE(deciphered(dataOf(longKey + "z"), enciphered(dataOf(longKey.substr(1) + "z"), kText)), kText);

    QBDataOutputStream *const target = QBDataOutputStream::stream();
    writeAll(Filter::streamWithTarget(target, /*randomSeed=*/3), kText, SIZE_MAX);
    EXPECT_EQ(bytesOf(target->targetData()),
              enciphered("Qv7-Rm2pWx9#Lt4k Zs8%Nd3fHy6!Jb"_ns, kText, SIZE_MAX, 3));
    EXPECT_EQ(Filter::streamWithKey(""_ns, /*decrypt=*/NO, target), nullptr);
}

TEST_F(QBBlowfishOutputFilterTest, AStreamWithoutAnEndIsCorrupt) {
    for (std::size_t length = 0; length < 24; ++length)
        expectError(100239, "", [&] {
            EXPECT_EQ(deciphered(sixteen(), fromHex(kStream).substr(0, length), 5), "");
            EXPECT_EQ(ERRORHANDLER->errorMessage()->view(),
                      "[100239] The blowfish encrypted data is corrupt.");
        });
}

TEST_F(QBBlowfishOutputFilterTest, KeyAndBlocksAreWiped) {
    // A filter whose memory outlives it.
    struct Exposed : Filter {
        using Filter::setUpWithKey;
    };
    alignas(Exposed) static unsigned char memory[sizeof(Exposed)];
    auto *const filter = new (memory) Exposed;
    filter->setUpWithKey(sixteen(), /*decrypt=*/NO, QBDataOutputStream::stream(), /*randomSeed=*/1);
    filter->writeBuffer(kText.data(), 5);
    const auto zeros = [] { return std::count(std::begin(memory), std::end(memory), 0); };
    EXPECT_LT(zeros(), 200);
    std::destroy_at(filter);
    EXPECT_GT(zeros(), 4168);
    EXPECT_EQ(std::search(std::begin(memory), std::end(memory), kText.begin(), kText.begin() + 5),
              std::end(memory));
}
