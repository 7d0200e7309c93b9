#include <QBFoundation/QBFoundation.h>

#include <algorithm>
#include <cctype>
#include <string>

/// Passes everything on in capital letters: a stream needs one operation.
class Loudly : public QBOutputStream {
public:
    explicit Loudly(QBOutputStream *target) : target_(target) {}
    void _writeBuffer(const void *buffer, std::uint32_t length) override {
        std::string text(static_cast<const char *>(buffer), length);
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return std::toupper(c); });
        target_->writeBuffer(text.data(), length);
    }

private:
    Ref<QBOutputStream> target_;
};

int main() {
    NSAutoreleasePool pool;
    QBStringOutputStream *text = QBStringOutputStream::streamWithCapacity(64);
    auto loudly = Ref<Loudly>::adopt(new Loudly(text));
    loudly->writeObject(NSArray::arrayWith({"one"_ns, NSNumber::numberWithInt(2), QBBool::trueBoolean()}));
    loudly->writeFormat(" and %d more"_ns, 3);
    OSUserIO::printLn(text->targetString());

    QBStringInputStream *source = QBStringInputStream::streamWithString("four bytes a time"_ns);
    char block[4];
    for (int count = source->readBuffer(block, 4); count > 0; count = source->readBuffer(block, 4))
        OSUserIO::print(NSString::stringWithFormat("<%@>"_ns, NSString::stringWithCString(block, count)));
    OSUserIO::printLn();
}
