// make_large_mailbox FILE --items N --size BYTES: writes a mailbox of that many items and about that size.
#include "testing/mailbox_builder/LargeMailbox.h"
#include "tools/mailboxes/Arguments.h"

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    mailbox_builder::LargeMailboxOptions options;
    OutputArguments output;
    CLI::App program("Writes a mailbox file of many items, the same for the same arguments.");
    output.AddTo(program);
    program.add_option("--items", options.items, "How many items")->required()->check(CLI::Range(1u, 1'000'000'000u));
    program.add_option("--size", options.bytes, "Bytes of the file, with K, M or G for 1024 and its powers")
        ->required()
        ->transform(CLI::AsSizeValue(false));
    program.add_option("--folders", options.folders, "How many folders (50)")->check(CLI::Range(4u, 100'000u));
    program.add_option("--attachments", options.attachmentShare, "The share of mails with an attachment (0.1)")
        ->check(CLI::Range(0.0, 1.0));
    program.add_option("--seed", options.seed, "Another number gives another mailbox (1)");
    CLI11_PARSE(program, argc, argv);
    options.writer.form = output.Form();

    const auto begin = std::chrono::steady_clock::now();
    const auto written = mailbox_builder::WriteLargeMailbox(output.Path(), options);
    if (!written) {
        std::fprintf(stderr, "%s could not be written: %s\n", output.file.c_str(), written.Failure().text.c_str());
        return 1;
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::printf("%s: %llu items, %llu attachments, %llu bytes, in %.1f s\n", output.file.c_str(),
                static_cast<unsigned long long>(written->items), static_cast<unsigned long long>(written->attachments),
                static_cast<unsigned long long>(written->fileBytes), seconds.count());
    return 0;
}
