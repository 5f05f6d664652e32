// make_sample_mailbox FILE: writes the mailbox in which everything occurs.
#include "testing/mailbox_builder/SampleMailbox.h"
#include "tools/mailboxes/Arguments.h"

#include <cstdio>

int main(int argc, char** argv) {
    CLI::App program("Writes a mailbox file with a few hundred items of every kind, the same each time.");
    OutputArguments output;
    output.AddTo(program);
    CLI11_PARSE(program, argc, argv);

    mailbox_builder::WriterOptions options;
    options.form = output.Form();
    if (const auto written = mailbox_builder::WriteSampleMailbox(output.Path(), options); !written) {
        std::fprintf(stderr, "%s could not be written: %s\n", output.file.c_str(), written.Failure().text.c_str());
        return 1;
    }
    const mailbox_builder::Inventory inventory = mailbox_builder::SampleMailbox().Count();
    std::printf("%s: %zu items in %zu folders\n", output.file.c_str(), inventory.messages, inventory.folders);
    return 0;
}
