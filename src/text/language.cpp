#include "text/language.h"

#include <new>

namespace vento {

Sentence::Sentence(const Phrase& phrase) {
    for (std::size_t i = 0; i < kLanguageCount; ++i)
        texts_[i] = phrase.In(static_cast<Language>(i));
}

Sentence::Sentence(std::string_view text) {
    texts_.fill(std::string(text));
}

Sentence& Sentence::operator+=(const Sentence& other) {
    for (std::size_t i = 0; i < kLanguageCount; ++i)
        texts_[i] += other.texts_[i];
    return *this;
}

Sentence Fill(const Phrase& pattern, std::initializer_list<Sentence> values) {
    Sentence filled;
    for (std::size_t i = 0; i < kLanguageCount; ++i) {
        const auto language = static_cast<Language>(i);
        std::string& text = filled.texts_[i];
        std::string_view rest = pattern.View(language);
        for (auto at = rest.find('{'); at != std::string_view::npos; at = rest.find('{')) {
            const auto end = rest.find('}', at);
            const std::string_view place = rest.substr(at + 1, end - at - 1);
            const std::string& value = std::data(values)[place.at(0) - '0'].In(language);
            text += rest.substr(0, at);
            if (place.size() == 1) {
                text += value;
            } else {
                const std::string_view words = place.substr(2);
                const auto bar = words.find('|');
                text += value == "1" ? words.substr(0, bar) : words.substr(bar + 1);
            }
            rest.remove_prefix(end + 1);
        }
        text += rest;
    }
    return filled;
}

Sentence Labelled(const Sentence& name, const Sentence& text) {
    return Fill({"{0}: {1}", "{0}: {1}"}, {name, text});
}

Sentence ReasonOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return kNoMemory;
    const auto* const reasoned = dynamic_cast<const ReasonedError*>(&error);
    return reasoned != nullptr ? reasoned->Reason() : Sentence(error.what());
}

}  // namespace vento
