// Arguments that the programs of this folder share.
#pragma once

#include "testing/mailbox_builder/MailboxWriter.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

// What is written, and how.
struct OutputArguments {
    std::string file;  // UTF-8
    std::string form = "unicode";

    void AddTo(CLI::App& program) {
        program.add_option("file", file, "The mailbox file to write; an existing one is replaced")->required();
        program.add_option("--form", form, "The form of the file (unicode)")
            ->check(CLI::IsMember({"unicode", "ansi", "large-pages"}));
    }

    std::filesystem::path Path() const { return std::filesystem::path(std::u8string(file.begin(), file.end())); }

    mailbox_builder::Form Form() const {
        using enum mailbox_builder::Form;
        return form == "ansi" ? Ansi : form == "large-pages" ? LargePages : Unicode;
    }
};
