#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();
    OSUserIO::initialize(); // the terminal's character set

    NSString *name = OSUserIO::askUserForStringWithQuestion("What is your name?"_ns);

    OSMultipleChoiceDescription *choices = OSMultipleChoiceDescription::multipleChoiceDescription();
    choices->setDescriptionString("Up to ten"_ns, 'u');
    choices->setDescriptionString("Without an end"_ns, 'w');
    NSString *question = NSString::stringWithFormat("How shall I count, %@?"_ns, name);
    char choice = OSUserIO::askMultipleChoice(choices, question);

    // On a terminal the bar is drawn in one line; elsewhere nothing is.
    OSProgressBar *bar =
        choice == 'u' ? OSProgressBar::progressBarWithStart(0, 10) : OSProgressBar::progressBar();
    for (int i = 0; i < 10; ++i)
        bar->increment();
    bar->finish();
    OSUserIO::printLn("Counted to ten."_ns);

    OSUserIO::askUserForStringWithQuestion("Anything else?"_ns);
    OSUserIO::printLn();
    if (ERRORHANDLER->errorState() != ERRORSTATE_OK) // the end of input
        OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
