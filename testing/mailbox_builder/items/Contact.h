// Contacts and distribution lists: [MS-OXOCNTC]. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/People.h"

#include <span>
#include <vector>

namespace mailbox_builder {

struct PostalAddress {
    CStringW street = {}, city = {}, state = {}, postalCode = {}, country = {};

    bool IsEmpty() const noexcept { return street.empty() && city.empty() && country.empty(); }
    CStringW OnOneLine() const;
};

// What most contacts have. What is empty is not set.
struct ContactFacts {
    CStringW title = {}, given = {}, middle = {}, surname = {}, generation = {};
    CStringW company = {}, department = {}, jobTitle = {};
    std::vector<Person> emails = {};  // the first three count
    CStringW businessPhone = {}, homePhone = {}, mobilePhone = {}, businessFax = {};
    PostalAddress business = {}, home = {}, other = {};
    CStringW notes = {};
    Time created = {};
    unsigned codePage = 1252;
};

Message MakeContact(const ContactFacts& facts);

// Everything that a form for contacts has a field for, beyond the facts.
void FillEveryContactField(Message& contact);

// PR_GENDER: [MS-OXOCNTC] 2.2.1.8.
enum class Gender : std::int16_t { Unspecified = 0, Female = 1, Male = 2 };
void SetGender(Properties& properties, Gender gender);

// A picture among the attachments, as forms for contacts show it: 2.2.1.8.3.
void SetPhoto(Message& contact, Bytes jpegOrGif);

// A list of one-off members: 2.2.2.
Message MakeDistributionList(const CStringW& name, std::span<const Person> members, Time created);

}  // namespace mailbox_builder
