// A second reader of compound files, slow and without mercy: everything that [MS-CFB] demands of version 3 is checked,
// and every sector must belong to exactly one thing. For files that our own writer made.
#pragma once

#include "StorageTestSupport.h"

#include <set>

namespace storage_test {

class StrictChecker {
public:
    explicit StrictChecker(Bytes file) : m_file(std::move(file)) {}

    // Checks everything; the streams by their paths, as Tree() gives them. Violations are test failures.
    std::map<CStringW, Bytes> Check() {
        CheckHeader();
        if (testing::Test::HasFailure()) {
            return {};
        }
        LoadFat();
        m_directory = Chain(Get32(48), "directory");
        const Bytes root = Entry(0);
        EXPECT_EQ(root[66], 5) << "entry 0 is the root";
        const std::uint32_t miniFatSectors = Get32(64);
        const Bytes miniFat = miniFatSectors == 0 ? Bytes() : Chain(Get32(60), "mini FAT");
        EXPECT_EQ(miniFat.size(), std::size_t{miniFatSectors} * 512);
        m_miniFat = Slots(miniFat);
        const std::uint64_t miniSize = Value(root, 120, 8);
        m_miniStream = miniSize == 0 ? Bytes() : Chain(Value32(root, 116), "mini stream");
        EXPECT_LE(miniSize, m_miniStream.size());
        m_miniOwners.resize(miniSize / 64);
        CheckStorage(0, {});
        CheckUnused();
        return m_tree;
    }

private:
    static std::uint64_t Value(const Bytes& bytes, std::size_t at, std::size_t count) {
        std::uint64_t value = 0;
        for (std::size_t i = count; i-- > 0;) {
            value = value << 8U | bytes.at(at + i);
        }
        return value;
    }
    static std::uint32_t Value32(const Bytes& bytes, std::size_t at) {
        return static_cast<std::uint32_t>(Value(bytes, at, 4));
    }
    std::uint32_t Get32(std::size_t at) const { return Value32(m_file, at); }
    static std::vector<std::uint32_t> Slots(const Bytes& bytes) {
        std::vector<std::uint32_t> slots;
        for (std::size_t at = 0; at < bytes.size(); at += 4) {
            slots.push_back(Value32(bytes, at));
        }
        return slots;
    }

    void CheckHeader() {
        ASSERT_GE(m_file.size(), 1536U);
        EXPECT_EQ(m_file.size() % 512, 0U);
        EXPECT_EQ(Value(m_file, 0, 8), 0xE11AB1A1E011CFD0U);
        EXPECT_EQ(Value(m_file, 8, 8) | Value(m_file, 16, 8), 0U);
        EXPECT_EQ(Get32(24), 0x0003003EU);
        EXPECT_EQ(Get32(28), 0x0009FFFEU);
        EXPECT_EQ(Value(m_file, 32, 8), 6U);
        EXPECT_EQ(Get32(40), 0U) << "directory sectors are not counted in version 3";
        EXPECT_EQ(Get32(56), 4096U);
        m_owners.resize(m_file.size() / 512 - 1);
    }

    Bytes Sector(std::uint32_t sector) const {
        const auto at = m_file.begin() + static_cast<std::ptrdiff_t>((std::size_t{sector} + 1) * 512);
        return {at, at + 512};
    }

    void Own(std::uint32_t sector, const std::string& owner) {
        ASSERT_LT(sector, m_owners.size()) << owner;
        EXPECT_EQ(m_owners[sector], "") << "sector " << sector << " also belongs to " << owner;
        m_owners[sector] = owner;
    }

    void LoadFat() {
        std::vector<std::uint32_t> fatSectors;
        for (std::size_t i = 0; i < 109; ++i) {
            fatSectors.push_back(Get32(76 + 4 * i));
        }
        std::uint32_t difatCount = 0;
        std::vector<std::uint32_t> difatSectors;
        for (std::uint32_t at = Get32(68); at != 0xFFFFFFFE && at < m_owners.size(); ++difatCount) {
            Own(at, "DIFAT");
            difatSectors.push_back(at);
            const std::vector<std::uint32_t> slots = Slots(Sector(at));
            fatSectors.insert(fatSectors.end(), slots.begin(), slots.end() - 1);
            at = slots.back();
        }
        EXPECT_EQ(difatCount, Get32(72));
        const auto unused = std::find(fatSectors.begin(), fatSectors.end(), 0xFFFFFFFF);
        EXPECT_TRUE(std::all_of(unused, fatSectors.end(), [](std::uint32_t slot) { return slot == 0xFFFFFFFF; }));
        fatSectors.erase(unused, fatSectors.end());
        EXPECT_EQ(fatSectors.size(), Get32(44));
        EXPECT_EQ(fatSectors.size(), (m_owners.size() + 127) / 128);
        for (const std::uint32_t sector : fatSectors) {
            Own(sector, "FAT");
            const std::vector<std::uint32_t> slots = Slots(Sector(sector));
            m_fat.insert(m_fat.end(), slots.begin(), slots.end());
        }
        for (const std::uint32_t sector : fatSectors) {
            EXPECT_EQ(m_fat.at(sector), 0xFFFFFFFDU);
        }
        for (const std::uint32_t sector : difatSectors) {
            EXPECT_EQ(m_fat.at(sector), 0xFFFFFFFCU);
        }
    }

    Bytes Chain(std::uint32_t sector, const std::string& owner) {
        Bytes bytes;
        for (; sector != 0xFFFFFFFE; sector = m_fat.at(sector)) {
            Own(sector, owner);
            if (testing::Test::HasFatalFailure() || bytes.size() > m_file.size()) {
                ADD_FAILURE() << owner << " does not end";
                break;
            }
            const Bytes part = Sector(sector);
            bytes.insert(bytes.end(), part.begin(), part.end());
        }
        return bytes;
    }

    Bytes MiniChain(std::uint32_t sector, const std::string& owner) {
        Bytes bytes;
        for (; sector != 0xFFFFFFFE; sector = m_miniFat.at(sector)) {
            EXPECT_EQ(m_miniOwners.at(sector), "") << owner;
            m_miniOwners.at(sector) = owner;
            const auto at = m_miniStream.begin() + 64 * static_cast<std::ptrdiff_t>(sector);
            bytes.insert(bytes.end(), at, at + 64);
        }
        return bytes;
    }

    Bytes Entry(std::uint32_t id) const {
        const auto at = m_directory.begin() + 128 * static_cast<std::ptrdiff_t>(id);
        EXPECT_LT(128 * std::size_t{id}, m_directory.size());
        return {at, at + 128};
    }

    static CStringW NameOf(const Bytes& entry) {
        const std::size_t units = Value(entry, 64, 2) / 2;
        EXPECT_TRUE(units >= 2 && units <= 32);
        CStringW name;
        for (std::size_t i = 0; i + 1 < units; ++i) {
            name.push_back(static_cast<WCHAR>(Value(entry, 2 * i, 2)));
        }
        for (std::size_t i = units - 1; i < 32; ++i) {
            EXPECT_EQ(Value(entry, 2 * i, 2), 0U);
        }
        return name;
    }

    // Upper case of ASCII only: names in the files checked here differ in other letters by more than case.
    static CStringW SortKey(const CStringW& name) {
        CStringW key(1, static_cast<WCHAR>(name.size()));
        for (const WCHAR unit : name) {
            key.push_back(unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - 32) : unit);
        }
        return key;
    }

    void CheckStorage(std::uint32_t id, const CStringW& path) {
        const std::uint32_t child = Value32(Entry(id), 76);
        if (child == 0xFFFFFFFF) {
            if (id != 0) {
                m_tree[path];
            }
            return;
        }
        EXPECT_EQ(Entry(child)[67], 1) << "the top of a tree is black";
        std::vector<std::uint32_t> inOrder;
        CheckSiblings(child, false, inOrder);
        CStringW previous;
        for (const std::uint32_t element : inOrder) {
            const CStringW name = NameOf(Entry(element));
            EXPECT_LT(previous, SortKey(name)) << "siblings are in order";
            previous = SortKey(name);
            CheckElement(element, path + name);
        }
    }

    // Gives the number of black entries on each way down, which must be one number.
    int CheckSiblings(std::uint32_t id, bool parentIsRed, std::vector<std::uint32_t>& inOrder) {
        if (id == 0xFFFFFFFF) {
            return 0;
        }
        EXPECT_TRUE(m_seen.insert(id).second) << "entry " << id << " has two places";
        const Bytes entry = Entry(id);
        const bool isRed = entry[67] == 0;
        EXPECT_FALSE(isRed && parentIsRed) << "two reds in a row at entry " << id;
        const int left = CheckSiblings(Value32(entry, 68), isRed, inOrder);
        inOrder.push_back(id);
        const int right = CheckSiblings(Value32(entry, 72), isRed, inOrder);
        EXPECT_EQ(left, right) << "black heights at entry " << id;
        return left + (isRed ? 0 : 1);
    }

    void CheckElement(std::uint32_t id, const CStringW& path) {
        const Bytes entry = Entry(id);
        const std::string owner = "entry " + std::to_string(id);
        if (entry[66] == 1) {
            EXPECT_EQ(Value(entry, 120, 8), 0U);
            CheckStorage(id, path + CStringW(1, '/'));
            return;
        }
        ASSERT_EQ(entry[66], 2);
        EXPECT_EQ(Value32(entry, 76), 0xFFFFFFFFU);
        EXPECT_EQ(Value(entry, 80, 8) | Value(entry, 88, 8) | Value(entry, 96, 4), 0U);
        EXPECT_EQ(Value(entry, 100, 8) | Value(entry, 108, 8), 0U) << "streams have no times";
        const std::uint64_t size = Value(entry, 120, 8);
        const std::uint32_t start = Value32(entry, 116);
        const std::uint64_t unit = size < 4096 ? 64 : 512;
        Bytes bytes = size < 4096 ? MiniChain(start, owner) : Chain(start, owner);
        EXPECT_EQ(bytes.size(), (size + unit - 1) / unit * unit);
        bytes.resize(size);
        m_tree[path] = std::move(bytes);
    }

    void CheckUnused() {
        for (std::size_t i = 0; i < m_owners.size(); ++i) {
            EXPECT_NE(m_owners[i], "") << "sector " << i << " is lost";
        }
        for (std::size_t i = m_owners.size(); i < m_fat.size(); ++i) {
            EXPECT_EQ(m_fat[i], 0xFFFFFFFFU);
        }
        for (std::size_t i = 0; i < m_miniFat.size(); ++i) {
            EXPECT_EQ(i < m_miniOwners.size() ? m_miniOwners[i].empty() : m_miniFat[i] != 0xFFFFFFFF, false);
        }
        for (std::uint32_t id = 1; 128 * std::size_t{id} < m_directory.size(); ++id) {
            const Bytes entry = Entry(id);
            if (m_seen.count(id) == 0) {
                EXPECT_TRUE(entry[66] == 0 && Value(entry, 64, 2) == 0 && Value32(entry, 68) == 0xFFFFFFFF) << id;
            }
        }
    }

    Bytes m_file;
    std::vector<std::string> m_owners;
    std::vector<std::uint32_t> m_fat;
    Bytes m_directory;
    Bytes m_miniStream;
    std::vector<std::uint32_t> m_miniFat;
    std::vector<std::string> m_miniOwners;
    std::set<std::uint32_t> m_seen;
    std::map<CStringW, Bytes> m_tree;
};

}  // namespace storage_test
