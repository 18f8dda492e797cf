#include "accredit/host/internal/PMMLVocabulary.h"

namespace MCDetail {

// Before the static objects of an application, whose constructors may export.
#define ACCREDIT_DEFINE_WORD(name, text) \
    const std::string g##name __attribute__((init_priority(200))) = text;
ACCREDIT_PMML_VOCABULARY(ACCREDIT_DEFINE_WORD)
#undef ACCREDIT_DEFINE_WORD

#define ACCREDIT_WORD_ADDRESS(name, text) &g##name,
const std::array<const std::string*, 96> gVocabulary = {
    ACCREDIT_PMML_VOCABULARY(ACCREDIT_WORD_ADDRESS)};
#undef ACCREDIT_WORD_ADDRESS

}  // namespace MCDetail
