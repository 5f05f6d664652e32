// The corpus of real mailbox files that lies beside the tree: $VX_CORPUS, else ../shared/corpus. It is never part of the
// tree; tests that need it skip, and say so, where there is none.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vx_testing {

// Empty when there is no corpus.
std::filesystem::path CorpusFolder();

// The mailbox files in it, sorted by name; empty when there is no corpus.
std::vector<std::filesystem::path> CorpusStores();

// The facts about a mailbox file that other programs found, a JSON text.
std::string TruthOf(const std::filesystem::path& store);

}  // namespace vx_testing
