// Writes a small message store: the store object, a tree of folders with their tables, messages, named properties.
#pragma once

#include "tests/localmapi/pst/support/HeapBuilder.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {

inline constexpr std::uint32_t kRoot = 0x122;
inline constexpr std::uint32_t kTop = 0x8022;

class StoreBuilder {
public:
    explicit StoreBuilder(const Form& form, pst::Encoding encoding = pst::Encoding::Permute) : image(form, encoding) {
        AddFolder(kRoot, kRoot, "");
        AddFolder(kTop, kRoot, "Top");
    }

    void AddFolder(std::uint32_t id, std::uint32_t parent, std::string_view name);
    void AddMessage(std::uint32_t id, std::uint32_t folder, std::string_view subject);
    void AddMessage(std::uint32_t id, std::uint32_t folder, NodeData node);

    // Beside those that every store has: of the store object.
    std::vector<Property> storeProperties;

    // Nodes that Build leaves out or writes so, whatever else they would be.
    std::map<std::uint32_t, NodeData> replaced;
    std::vector<std::uint32_t> leftOut;

    Bytes Build();

    ImageBuilder image;

private:
    struct Folder {
        std::uint32_t parent;
        std::string name;
        std::vector<Row> folders;
        std::vector<Row> messages;
        std::vector<Row> associated;
    };
    void AddNode(std::uint32_t id, NodeData node, std::uint32_t parent);

    std::map<std::uint32_t, Folder> m_folders;
};

inline const Bytes kStoreKey = Pattern(16, 77);

// An entry id of the store's.
Bytes EntryId(std::uint32_t node, const Bytes& key = kStoreKey);

// A message with a subject, recipients and attachments; each attachment is what AddProperties gave for it.
NodeData AddMessageNode(ImageBuilder& image, std::string_view subject, const std::vector<NodeData>& attachments = {},
                        const std::vector<Row>& recipients = {});

}  // namespace localmapi::testing
