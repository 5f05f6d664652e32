// The address book's folders.
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Contact.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Languages.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

ContactFacts FactsOfBirgit() {
    return {
        .title = Wide("Dr."),
        .given = Wide("Birgit"),
        .middle = Wide("Anna"),
        .surname = Wide("Example"),
        .generation = Wide("III"),
        .company = Wide("Example Works"),
        .department = Wide("Structures"),
        .jobTitle = Wide("Head of Structures"),
        .emails = {People().birgit, Outsider(Wide("Birgit at home"), Wide("birgit@home.example.org")),
                   Outsider(Wide("Birgit at the club"), Wide("b.example@rowing.example.net"))},
        .businessPhone = Wide("+46 8 5550 0101"),
        .homePhone = Wide("+46 8 5550 0120"),
        .mobilePhone = Wide("+46 70 5550 121"),
        .businessFax = Wide("+46 8 5550 0122"),
        .business = {Wide("Skeppsbron 1"), Wide("Stockholm"), Wide("Stockholms l\u00E4n"), Wide("111 30"),
                     Wide("Sweden")},
        .home = {Wide("Granitgatan 5"), Wide("Uppsala"), Wide("Uppland"), Wide("753 10"), Wide("Sweden")},
        .other = {Wide("Summer house, Oak Island"), Wide("Norrt\u00E4lje"), Wide(""), Wide("761 00"), Wide("Sweden")},
        .notes = Wide("Knows every rivet.\r\n"),
        .created = At(2024, 1, 8, 9)};
}

void DescribeColleagues(Tree& tree) {
    SampleFolder& folder = tree.At(Wide("Contacts"));
    Message full = MakeContact(FactsOfBirgit());
    FillEveryContactField(full);
    SetPhoto(full, MakeGif(180, 140, 120));
    folder.messages.push_back(std::move(full));

    int number = 0;
    for (const Person* person : People().Colleagues()) {
        ++number;
        const std::size_t blank = person->name.find(WCHAR{' '});
        Message contact = MakeContact({.given = person->name.substr(0, blank),
                                       .surname = person->name.substr(blank + 1),
                                       .company = Wide("Example Works"),
                                       .emails = {*person},
                                       .businessPhone = Wide("+46 8 5550 02" + std::to_string(10 + number)),
                                       .created = At(2024, 1, 8, 9, number)});
        SetGender(contact.properties, number % 2 == 0 ? Gender::Male : Gender::Unspecified);
        folder.messages.push_back(std::move(contact));
    }
}

void DescribeForeignNames(Tree& tree) {
    SampleFolder& folder = tree.At(Wide("Contacts"));
    for (const Language& language : Languages()) {
        const CStringW name = Wide(language.person);
        const std::size_t blank = name.find(WCHAR{' '});
        folder.messages.push_back(
            MakeContact({.given = name.substr(0, blank),
                         .surname = name.substr(blank + 1),
                         .emails = {Outsider(name, Wide(std::string(language.alias) + "@example.org"))},
                         .notes = Wide(language.subject),
                         .created = At(2024, 2, 1, 9, language.locale % 60),
                         .codePage = language.codePage}));
    }
}

void DescribeSuppliers(Tree& tree) {
    constexpr const char* kFirms[] = {"Anchor & Chain", "Northern Paint", "Rope Walk",   "Diving Bell Rentals",
                                      "Quay Lamps",     "Granite Yard",   "Valve House", "Paper & Ink"};
    SampleFolder& folder = tree.At(Wide("Contacts/Suppliers"));
    int number = 0;
    for (const char* firm : kFirms) {
        ++number;
        const std::string host = "supplier" + std::to_string(number) + ".example.net";
        Message contact = MakeContact({.company = Wide(firm),
                                       .emails = {Outsider(Wide(firm), Wide("sales@" + host))},
                                       .businessPhone = Wide("+358 9 5550 30" + std::to_string(number)),
                                       .business = {.street = Wide("Dock road " + std::to_string(number * 7)),
                                                    .city = Wide("Turku"),
                                                    .postalCode = Wide("20100"),
                                                    .country = Wide("Finland")},
                                       .created = At(2024, 3, 1, 8, number)});
        contact.properties.Set(PR_BUSINESS_HOME_PAGE, Wide("https://www." + host + "/"));
        SetCategories(contact.properties, {Wide("Suppliers")});
        folder.messages.push_back(std::move(contact));
    }
    // A form of one's own.
    folder.messages.back().properties.Set(PR_MESSAGE_CLASS, Wide("IPM.Contact.Supplier"));
}

}  // namespace

void DescribeContacts(Tree& tree) {
    DescribeColleagues(tree);
    DescribeForeignNames(tree);
    DescribeSuppliers(tree);
    const Cast& cast = People();
    SampleFolder& folder = tree.At(Wide("Contacts"));
    folder.messages.push_back(MakeContact({.created = At(2026, 1, 5)}));  // nothing filled in
    const Person crew[] = {cast.ines, cast.tobias, cast.hanna, cast.luca};
    folder.messages.push_back(MakeDistributionList(Wide("Bridge crew"), crew, At(2025, 3, 3, 10)));
    folder.messages.push_back(MakeDistributionList(Wide("Nobody yet"), {}, At(2025, 3, 3, 11)));
}

}  // namespace mailbox_builder::sample
