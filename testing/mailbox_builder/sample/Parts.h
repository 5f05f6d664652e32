// The parts that the sample mailbox is made of, and who and what they share. One thread at a time.
#pragma once

#include "testing/mailbox_builder/SampleMailbox.h"
#include "testing/mailbox_builder/items/People.h"

#include <array>
#include <cstddef>
#include <deque>
#include <span>

namespace mailbox_builder::sample {

// The folders while they are filled.
class Tree {
public:
    explicit Tree(std::deque<SampleFolder>& folders) : m_folders(&folders) {}

    // Adds a folder, with a class unless that is empty. Its parent is there already. What is given stays valid.
    SampleFolder& Add(const CStringW& path, const CStringW& containerClass, Place place = Place::Visible);

    // The folder, which is there.
    SampleFolder& At(const CStringW& path, Place place = Place::Visible);

private:
    std::deque<SampleFolder>* m_folders;
};

// Picks among several, equally from run to run.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_state(seed * 2 + 1) {}

    // 0 to `sides` - 1.
    std::size_t Roll(std::size_t sides);

    template <class Range>
    auto& Pick(Range& range) {
        return range[Roll(std::size(range))];
    }

private:
    std::uint64_t m_state;
};

// Those who write to each other. Mara owns the mailbox.
struct Cast {
    Person mara, ines, tobias, priya, oluwaseun, birgit, marek;  // colleagues
    Person hanna, luca, postmaster, newsletter, shop;            // others

    std::array<const Person*, 6> Colleagues() const { return {&ines, &tobias, &priya, &oluwaseun, &birgit, &marek}; }
};
const Cast& People();

void AddFolders(Tree& tree);

void DescribeThreads(Tree& tree);      // conversations about the projects, sent and received
void DescribeRoutineMail(Tree& tree);  // newsletters, sensor reports, junk, what was deleted, drafts
void DescribeMailForms(Tree& tree);    // bodies, recipients, flags: each form once
void DescribeLanguages(Tree& tree);    // scripts and code pages
void DescribeAttachments(Tree& tree);
void DescribeContacts(Tree& tree);
void DescribeCalendar(Tree& tree);
void DescribeTasksAndNotes(Tree& tree);
void DescribeRareItems(Tree& tree);  // posts, reports, documents, secured mail, hidden messages, unknown classes

}  // namespace mailbox_builder::sample
