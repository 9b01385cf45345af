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
        const std::string text = pattern.In(language);
        std::string_view rest = text;
        for (auto at = rest.find('{'); at != std::string_view::npos; at = rest.find('{')) {
            const bool isPlace = at + 2 < rest.size() && rest[at + 2] == '}' && rest[at + 1] >= '0' &&
                                 rest[at + 1] < '0' + static_cast<int>(values.size());
            filled.texts_[i] += rest.substr(0, isPlace ? at : at + 1);
            if (isPlace) filled.texts_[i] += (values.begin() + (rest[at + 1] - '0'))->In(language);
            rest.remove_prefix(isPlace ? at + 3 : at + 1);
        }
        filled.texts_[i] += rest;
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
