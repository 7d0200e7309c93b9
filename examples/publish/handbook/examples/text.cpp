#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    // HTML and addresses have characters of their own, which texts in them may not have as they are.
    OSUserIO::printLn("Salt & <pepper>"_ns->stringWithEscapedHtml());
    OSUserIO::printLn("caf\xc3\xa9 two"_ns->urlEscape());
    OSUserIO::printLn("two+words%21"_ns->urlUnEscape());

    // Base64 is a stream on its way to another one. What is written is complete after flush.
    QBStringOutputStream *text = QBStringOutputStream::streamWithCapacity(64);
    QBBase64OutputFilter *base64 = QBBase64OutputFilter::streamWithTarget(text);
    base64->writeObject("any bytes"_ns);
    base64->flush();
    OSUserIO::printLn(text->targetString());
    OSUserIO::printLn(NSString::initWithData(text->targetString()->decodeBase64()).autorelease());

    QBMD5OutputStream *digest = QBMD5OutputStream::stream();
    digest->writeObject("any bytes"_ns);
    OSUserIO::printLn(digest->md5Hash());

    // Amounts are whole cents.
    for (NSString *price : {"12.34"_ns, "12,34"_ns, "12"_ns, "1,5"_ns})
        OSUserIO::printLn(NSString::stringWithFormat("%@ is %d"_ns, price, price->intFromMoneyString()));

    // Bytes as digits, and back.
    OSUserIO::printLn("Hello"_ns->asHexString());
    OSUserIO::printLn(NSString::initWithData("48 65 6C 6c 6f"_ns->dataFromHexString()).autorelease());

    // What is malformed is an error with its place.
    "48 6x"_ns->dataFromHexString();
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
    ERRORHANDLER->clearErrorStack();
    OSUserIO::printLn(NSString::initWithData("QUJD!!!!"_ns->decodeBase64()).autorelease());
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
