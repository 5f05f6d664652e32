// Texts in a dozen languages, each with the code page that mail in it was written in. UTF-8, and representable in the
// page without loss. Any thread.
#pragma once

#include <span>
#include <string_view>

namespace mailbox_builder {

struct Language {
    std::string_view name;
    unsigned codePage;
    int locale;
    std::string_view person;
    std::string_view alias;  // of the person's address
    std::string_view subject;
    std::string_view body;
    std::string_view fileName;
};

std::span<const Language> Languages();

}  // namespace mailbox_builder
