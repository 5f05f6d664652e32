#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <algorithm>

namespace localmapi::testing {

namespace {

constexpr std::uint32_t kDisplayName = 0x3001001F;
constexpr std::uint32_t kSubject = 0x0037001F;

}  // namespace

Bytes EntryId(std::uint32_t node, const Bytes& key) {
    return ByteWriter().U32(0).Append(key).U32(node).Take();
}

NodeData AddMessageNode(ImageBuilder& image, std::string_view subject, const std::vector<NodeData>& attachments,
                        const std::vector<Row>& recipients) {
    std::vector<std::pair<std::uint32_t, NodeData>> subnodes;
    std::vector<Row> rows;
    for (std::size_t i = 0; i < attachments.size(); ++i) {
        const auto id = static_cast<std::uint32_t>(0x8025 + i * 0x20);
        subnodes.emplace_back(id, attachments[i]);
        rows.push_back({id, {{0x0E200003, Number32(7)}}});
    }
    if (!attachments.empty()) {
        subnodes.emplace_back(0x671, AddTable(image, {0x0E200003}, rows));
    }
    if (!recipients.empty()) {
        subnodes.emplace_back(0x692, AddTable(image, {0x0C150003, kDisplayName}, recipients));
    }
    return AddProperties(image, {{0x001A001F, Utf16("IPM.Note")}, {kSubject, Utf16(subject)}}, subnodes);
}

void StoreBuilder::AddFolder(std::uint32_t id, std::uint32_t parent, std::string_view name) {
    m_folders[id] = Folder{parent, std::string(name), {}, {}, {}};
    if (id != parent) {
        m_folders[parent].folders.push_back({id, {{kDisplayName, Utf16(name)}}});
    }
}

void StoreBuilder::AddMessage(std::uint32_t id, std::uint32_t folder, std::string_view subject) {
    AddMessage(id, folder, AddMessageNode(image, subject));
    Folder& owner = m_folders[folder];
    ((id & 0x1F) == 8 ? owner.associated : owner.messages).back().cells.push_back({kSubject, Utf16(subject)});
}

void StoreBuilder::AddMessage(std::uint32_t id, std::uint32_t folder, NodeData node) {
    Folder& owner = m_folders[folder];
    ((id & 0x1F) == 8 ? owner.associated : owner.messages).push_back({id, {}});
    AddNode(id, node, folder);
}

void StoreBuilder::AddNode(std::uint32_t id, NodeData node, std::uint32_t parent) {
    if (replaced.contains(id)) {
        node = replaced.at(id);
    }
    if (std::find(leftOut.begin(), leftOut.end(), id) == leftOut.end()) {
        image.AddNode(id, node.data, node.subnodes, parent);
    }
}

Bytes StoreBuilder::Build() {
    std::vector<Property> store = {{0x0FF90102, kStoreKey}, {kDisplayName, Utf16("Store")}};
    store.insert(store.end(), storeProperties.begin(), storeProperties.end());
    AddNode(0x21, AddProperties(image, store), 0);
    AddNode(0x61, AddProperties(image, {{0x00010003, Number32(251)}}), 0);
    for (const auto& [id, folder] : m_folders) {
        AddNode(id, AddProperties(image, {{kDisplayName, Utf16(folder.name)}}), folder.parent);
        AddNode((id & ~0x1FU) | 0x0D, AddTable(image, {kDisplayName}, folder.folders), 0);
        AddNode((id & ~0x1FU) | 0x0E, AddTable(image, {kSubject}, folder.messages), 0);
        AddNode((id & ~0x1FU) | 0x0F, AddTable(image, {kSubject}, folder.associated), 0);
    }
    return image.Build();
}

}  // namespace localmapi::testing
