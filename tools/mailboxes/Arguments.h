// Arguments that the programs of this folder share.
#pragma once

#include "testing/mailbox_builder/MailboxWriter.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <map>
#include <string>

// What is written, and how.
struct OutputArguments {
    std::string file;  // UTF-8
    mailbox_builder::Form form = mailbox_builder::Form::Unicode;

    void AddTo(CLI::App& program) {
        using mailbox_builder::Form;
        static const std::map<std::string, Form> kForms = {
            {"unicode", Form::Unicode}, {"ansi", Form::Ansi}, {"large-pages", Form::LargePages}};
        program.add_option("file", file, "The mailbox file to write; an existing one is replaced")->required();
        program.add_option("--form", form, "unicode (the default), ansi or large-pages")
            ->transform(CLI::CheckedTransformer(kForms, CLI::ignore_case).description("FORM"));
    }

    std::filesystem::path Path() const { return std::filesystem::path(std::u8string(file.begin(), file.end())); }
};
