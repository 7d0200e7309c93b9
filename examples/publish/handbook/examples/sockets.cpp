#include <QBFoundation/QBFoundation.h>

/// Takes the next client and answers what it asks.
void serve(OSSocket *server) {
    OSSocket *connection = OSSocket::acceptSocketFromListener(server);
    NSString *request = connection->readLineWithTimeout(1000);
    while (connection->readLineWithTimeout(1000)->containsData()) { // the rest of the head
    }
    QBOutputStream *answer = connection->getOutputStream();
    answer->writeFormat("200 %@"_ns, request);
    answer->writeCRNL();
    answer->writeObject(NSArray::arrayWith({"two"_ns, "values"_ns}));
    answer->close();
}

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    NSString *name = OSSocket::makeNameForSocket();
    OSSocket *server = OSSocket::serverSocketWithName(name);
    OSSocket *client = OSSocket::clientSocketWithName(name);
    OSUserIO::printLn(NSString::stringWithFormat("nothing came in 10 ms: %d"_ns,
                                                 client->getInputStream()->readByteWithTimeout(10)));

    client->writeLine("GET /index.html"_ns);
    client->writeLine("Accept: text/plain"_ns);
    client->writeLine(""_ns);
    NSArray *sockets = NSArray::arrayWith({server, client});
    for (id ready : *OSSocket::selectSockets(sockets, OSSocket::kReadable, /*timeoutSecs=*/5, 0))
        if (ready == server)
            serve(server);

    OSUserIO::printLn(client->readLine());
    OSUserIO::printLn(NSString::stringWithFormat("%@"_ns, client->readBytes(100)));
    client->writeLine("more"_ns); // the server has hung up
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
    OSFilePath::removePath(name);
}
