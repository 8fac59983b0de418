#include "host/contacts/vcard_reader.h"

#include <optional>

#include "host/contacts/vcard_builder.h"
#include "host/formats/content_lines.h"

namespace ovno2::host {

namespace {

bool isCard(const ContentLine& line) {
    return equalsIgnoringCase(fromUtf8(line.value).substr(0, 5), u"VCARD");
}

class CardFileReader {
  public:
    CardFileReader(std::string_view bytes, std::string_view file, std::string_view charset)
        : lines_(bytes, std::string(charset)), file_(file) {}

    CardFile read() {
        ContentLine line;
        while (lines_.next(line))
            take(line);
        if (card_) problem(start_, "the file ends in the middle of the card that begins here");
        if (result_.contacts.empty() && result_.problems.empty()) problem(1, "there is no card in this file");
        return std::move(result_);
    }

  private:
    void take(const ContentLine& line) {
        const bool begins = line.name == "BEGIN", ends = line.name == "END";
        if (begins && isCard(line) && !(card_ && afterAgent_)) return beginCard(line.number);
        afterAgent_ = card_ && line.name == "AGENT" && line.value.empty();
        if (begins) {
            if (inside_++ == 0 && !card_) problem(line.number, "\"" + line.value + "\" is no card");
            if (inside_ == 1 && card_) card_->addComponent(isCard(line) ? "AGENT" : line.value);
        } else if (ends && inside_ > 0) {
            --inside_;
        } else if (ends) {
            if (card_) endCard();
        } else if (inside_ == 0) {
            if (card_) return card_->add(line);
            if (!outside_) problem(line.number, "what stands here is in no card");
            outside_ = true;
        }
    }

    void beginCard(std::size_t number) {
        if (card_) {
            card_->say("END", "missing; the next card begins at line " + std::to_string(number));
            endCard();
        }
        card_.emplace();
        start_ = number;
        inside_ = 0;
        outside_ = false;
    }

    void endCard() {
        std::string why = card_->finish();
        if (why.empty()) {
            result_.contacts.push_back(std::move(card_->contact()));
            result_.lines.push_back(start_);
        } else {
            problem(start_, why);
        }
        card_.reset();
    }

    void problem(std::size_t number, const std::string& what) {
        result_.problems.push_back(file_ + ":" + std::to_string(number) + ": " + what);
    }

    ContentLineReader lines_;
    std::string file_;
    CardFile result_;
    std::optional<CardBuilder> card_;
    std::size_t start_ = 0;    // the line of its BEGIN
    std::size_t inside_ = 0;   // how many components deep, in the card or beside all cards
    bool afterAgent_ = false;  // the line before announced a card in the card
    bool outside_ = false;     // that there is text in no card has been said
};

}  // namespace

CardFile readCards(std::string_view bytes, std::string_view file, std::string_view charset) {
    return CardFileReader(bytes, file, charset).read();
}

}  // namespace ovno2::host
