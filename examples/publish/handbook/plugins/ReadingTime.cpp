// A page plug-in: how many words a page has, and how many minutes they take, as {{page.words}} and
// {{page.minutes}}.
#include <QBFoundation/QBFoundation.h>

#include <cctype>

namespace {

constexpr int kWordsAMinute = 200;

// Words outside of tags.
int wordsIn(NSString *html) {
    int words = 0;
    bool isInTag = false, isInWord = false;
    for (const char character : html->view()) {
        isInTag = character == '<' || (isInTag && character != '>');
        const bool separates =
            isInTag || character == '>' || std::isspace(static_cast<unsigned char>(character));
        words += !separates && !isInWord;
        isInWord = !separates;
    }
    return words;
}

class ReadingTime : public NSObject {
public:
    static Class *cls() {
        static const qb::Method methods[] = {
            qb::classMethod<"valuesForPage:body:">(&ReadingTime::valuesForPage),
        };
        static Class *const self = new Class("ReadingTime", NSObject::cls(), methods);
        return self;
    }
    Class *classObject() const override { return cls(); }

    static NSDictionary *valuesForPage(NSDictionary *, NSString *body) {
        const int words = wordsIn(body);
        return NSDictionary::dictionaryWith({
            {"words"_ns, NSNumber::numberWithInt(words)},
            {"minutes"_ns, NSNumber::numberWithInt((words + kWordsAMinute - 1) / kWordsAMinute)},
        });
    }
};

const qb::ClassRegistration registration{&ReadingTime::cls};

} // namespace
