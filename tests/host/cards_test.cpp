// Address cards: what other programs write is read, and what is written reads back as it was.
#include <random>
#include <sstream>

#include "host/contacts/field_table.h"
#include "host/contacts/vcard_reader.h"
#include "host/contacts/vcard_writer.h"
#include "host/formats/content_lines.h"
#include "host/ovphone_fixture.h"

namespace ovno2::host {

namespace {

// All that a contact holds, one value a line.
std::string told(const ContactDraft& contact) {
    std::string text;
    for (std::size_t row = 0; row < contact.values.size(); ++row)
        for (const Text& value : contact.values[row])
            text.append(fieldRows()[row].key).append("=").append(toUtf8(value)).append("\n");
    for (const ContactDraft::Picture& picture : contact.pictures)
        text.append(picture.extension).append(":").append(picture.bytes).append("\n");
    if (!contact.uid.empty()) text.append("uid=").append(toUtf8(contact.uid)).append("\n");
    for (const std::string& one : contact.unplaced)
        text.append("- ").append(one).append("\n");
    return text;
}

std::string told(const CardFile& file) {
    std::string text;
    for (const ContactDraft& contact : file.contacts)
        text.append(&contact == file.contacts.data() ? "" : "--\n").append(told(contact));
    for (const std::string& problem : file.problems)
        text.append("! ").append(problem).append("\n");
    return text;
}

// The card comes back, from lines that every program can take.
void expectSurvival(const ContactDraft& contact) {
    for (const char* const number : {"2.1", "3.0", "4.0"}) {
        const std::string card = writeCard(contact, *cardVersion(number));
        const CardFile read = readCards(card, number);
        if (told(contact).empty()) continue;
        ASSERT_EQ(1u, read.contacts.size()) << card;
        ASSERT_EQ(told(contact), told(read)) << card;
        Text line;
        std::istringstream lines(card);
        for (std::string bytes; std::getline(lines, bytes);) {
            // With CR; a line of the old form is no shorter than its head.
            const bool isHead = bytes.find(";ENCODING=QUOTED-PRINTABLE:") != std::string::npos;
            ASSERT_LE(bytes.size(), isHead ? 100u : 76u) << card;
            ASSERT_TRUE(readUtf8(bytes, line)) << card;
        }
        ASSERT_NE(std::string::npos, card.find("\r\nFN"));
    }
}

class Cards : public Ovphone {};

TEST_F(Cards, BringThePhoneBookBackInEveryVersion) {
    for (const char* const phone : {"N95", "6230i"}) {
        rapidjson::Document book;
        book.Parse(json(std::string("contacts --phone ") + phone).c_str());
        ASSERT_GE(book.Size(), 10u);
        for (const auto& object : book.GetArray()) {
            ContactDraft contact{std::vector<std::vector<Text>>(fieldRows().size()), {}, {}, {}};
            for (std::size_t row = 0; row < fieldRows().size(); ++row) {
                const auto member = object.FindMember(std::string(fieldRows()[row].key).c_str());
                if (member == object.MemberEnd()) continue;
                if (member->value.IsString()) {
                    contact.values[row].push_back(fromUtf8(member->value.GetString()));
                } else {
                    for (const auto& value : member->value.GetArray())
                        contact.values[row].push_back(fromUtf8(value.GetString()));
                }
            }
            contact.uid = fromUtf8(object["uid"].GetString());
            expectSurvival(contact);
        }
    }
}

TEST(Card, BringsBackWhateverARowHolds) {
    std::mt19937 random(20);
    const auto upTo = [&](std::size_t most) { return random() % (most + 1); };
    const Text pieces[] = {u"a",          u";",
                           u",",          u"\\",
                           u"\\n",        u"\n",
                           u":",          u"=",
                           u"=40",        u"^n",
                           u"\"",         u"END:VCARD",
                           u"ü",          u"日本",
                           u"\U0001F600", u"e\u0301",
                           u"שלום",       u" x",
                           u"\t.",        u"--",
                           u"+49 171",    u"12345678901234567890",
                           u"\u2028",     u"data:"};
    for (int round = 0; round < 150; ++round) {
        ContactDraft contact{std::vector<std::vector<Text>>(fieldRows().size()), {}, {}, {}};
        for (std::size_t row = 0; row < fieldRows().size(); ++row) {
            const FieldRow& field = fieldRows()[row];
            if (field.code == HostField::picture || upTo(3) != 0) continue;
            for (std::size_t count = field.holds == Holds::one ? 1 : 1 + upTo(2); count > 0; --count) {
                Text value = u"x";
                for (std::size_t length = upTo(upTo(9) == 0 ? 200 : 8); length > 0; --length)
                    value += pieces[upTo(std::size(pieces) - 1)];
                // The phone itself has no ";" in a category.
                if (field.code == HostField::categories) std::erase(value, u';');
                if (field.code == HostField::birthday && upTo(1) == 0) value = u"1980-02-29";
                contact.values[row].push_back(value);
            }
        }
        for (std::size_t count = upTo(5) == 0 ? 1 + upTo(1) : 0; count > 0; --count) {
            constexpr const char* extensions[] = {"jpg", "png", "gif", "bmp", ""};
            std::string bytes("\x01");
            for (std::size_t length = upTo(300); length > 0; --length)
                bytes.push_back(static_cast<char>(random()));
            contact.pictures.push_back({bytes, extensions[upTo(4)]});
        }
        if (upTo(1) == 0) contact.uid = upTo(1) == 0 ? u"0A0B" : u"urn:uuid:0A,0B";
        expectSurvival(contact);
        if (HasFatalFailure()) return;
    }
}

struct Reading {
    const char* what;
    std::string card;  // between BEGIN and END; its first line is VERSION where one is meant
    const char* told;
};

TEST(Card, IsReadAsPhonesAndProgramsWriteIt) {
    const std::string old = "VERSION:2.1\n", three = "VERSION:3.0\r\n", four = "VERSION:4.0\r\n";
    const Reading readings[] = {
        {"bare types, the preferred number first",
         old + "N: Roe ;Jo\nTEL;CELL:1\nTEL;PREF;CELL:2\nTEL;CAR:3\nTEL;VOICE:4\n",
         "firstName=Jo\nlastName=Roe\nmobile=2\nphone=4\nmobile2=1\nmobile2=3\n- TEL: TYPE=CAR of \"3\"\n"},
        {"quoted-printable over lines, one of them empty",
         old + "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=\n=96z;J=\n\nTEL;HOME;QUOTED-PRINTABLE:0=2B1\n",
         "firstName=J\nlastName=Öz\nhomePhone=0+1\n"},
        {"a stray soft break takes no end with it", old + "NOTE;ENCODING=QUOTED-PRINTABLE:a\\nb=0D=0Ac=\n",
         "note=a\\nb\nc=\n"},
        {"an old fold keeps its blank, a new one does not", old + "NOTE:one\n two\\;\n", "note=one two;\n"},
        {"", three + "NOTE:one\r\n two\\nthree\\, fo\r\n\tur\r\n", "note=onetwo\nthree, four\n"},
        {"base64 folded and not",
         old + "PHOTO;JPEG;BASE64:/9j/\n 4AAQ\n\nPHOTO;ENCODING=BASE64;TYPE=GIF:\nR0lG\nODlh\nTEL:1\n",
         "phone=1\njpg:\xFF\xD8\xFF\xE0\x00\x10\ngif:GIF89a\n"},
        {"pictures in addresses, elsewhere and damaged",
         four + "PHOTO:data:image/png;base64,iVBORw==\nPHOTO:http://x/"
                "y.jpg\nLOGO;ENCODING=b:AAAA\nPHOTO;ENCODING=b:!!\nFN:A\n",
         "formalName=A\npng:\x89PNG\n- PHOTO: the picture is not in the card: \"http://x/y.jpg\"\n- LOGO\n- "
         "PHOTO: its base64 is damaged\n"},
        {"character sets",
         old + "N;CHARSET=ISO-8859-2:\xA3\xF3"
               "d\xBC;\nNOTE;CHARSET=windows-1251;ENCODING=QUOTED-PRINTABLE:=CF\nTITLE:\xE4\nORG;CHARSET=x-"
               "own:\xE4\nROLE;CHARSET=Shift_JIS:\x93\xFA\n",
         "lastName=Łódź\ncompany=ä\njobTitle=ä\njobTitle=日\nnote=П\n- ORG: the character set \"x-own\" is "
         "not known\n"},
        {"a name's parts, and a formatted name that says more",
         three + "N:Doe;John;Q,R;Dr.;Jr.\nFN:Dr. John Doe\n",
         "firstName=John Q R\nlastName=Doe\nformalName=Dr. John Q R Doe Jr.\ntitle=Dr.\n"},
        {"", three + "N:Doe;John\nFN:Doe, John\nORG:A\\;B;C\n",
         "firstName=John\nlastName=Doe\ncompany=A;B\ncompany=C\n"},
        {"", three + "N:Doe;John\nFN:The Doe\nFN:J\nN:X\n",
         "firstName=John\nlastName=Doe\nformalName=The Doe\n- FN: a second name: \"J\"\n- N: a second name: "
         "\"X\"\n"},
        {"days", three + "BDAY:19770324T000000Z\nBDAY:1977-03-25\n",
         "birthday=1977-03-24\n- BDAY: a second day: \"1977-03-25\"\n"},
        {"",
         four + "FN:A\nBDAY:--0412\nBDAY:1985-04\nBDAY:1983-02-29\nBDAY;X-APPLE-OMIT-YEAR=1604:1604-04-12\n",
         "formalName=A\n- BDAY: \"--0412\" is no day with its year\n- BDAY: \"1985-04\" is no day with its "
         "year\n- BDAY: \"1983-02-29\" is no day with its year\n- BDAY: \"1604-04-12\" is no day with its "
         "year\n"},
        {"addresses",
         three +
             "ADR;TYPE=home:7;;Way 1\\, 2;Town;;1;DE\nADR:;Flat;Road;;;;\nADR;TYPE=WORK,X-A:;Court;;;;;\n",
         "homeStreet=Way 1, 2\nhomePostcode=1\nhomeTown=Town\nhomeCountry=DE\nworkStreet=Court\nstreet=Road\n"
         "- ADR: the post box \"7\"\n- ADR: the addition \"Flat\"\n- ADR: "
         "TYPE=X-A\n"},
        {"groups, labels, parameters in quotation marks",
         three + "item1.TEL;TYPE=\"cell,voice\":1\nitem2.TEL:2\nitem2.X-ABLabel:_$!<Work>!$_\nitem3.URL;X-P="
                 "\"a;b:c\":http\\://x\nitem3.X-ABLabel:Blog\n",
         "mobile=1\nworkPhone=2\nweb=http://x\n- URL: X-P=a;b:c\n- X-ABLABEL: \"Blog\"\n"},
        {"caret escapes and numbers as addresses",
         four + "TEL;VALUE=uri;PREF=2:tel:+1;ext=5\nTEL;PREF=1:+2\nEMAIL;LANGUAGE=^'de^':a@b\n",
         "phone=+2\nemail=a@b\nphone2=+1\n- TEL: \"ext=5\"\n- EMAIL: LANGUAGE=\"de\"\n"},
        {"lists", three + "CATEGORIES:a,b\\,c\nCATEGORIES:d;e\nNICKNAME:x,y\nNOTE:1\nNOTE:2\nNOTE:3\nUID:u\n",
         "categories=a\ncategories=b,c\ncategories=d\ncategories=e\nnickname=x, "
         "y\nnote=1\nnote2=2\nnote2=3\nuid=u\n"},
        {"what has no row",
         three + "TEL;TYPE=FAX,WORK:1\nEMAIL;TYPE=work:w\nEMAIL;TYPE=HOME:h\nX-JABBER:j\nGEO:\nREV:"
                 "2007\nnonsense\nX-JABBER:j\n",
         "email=h\nfax=1\nemail2=w\n- X-JABBER: \"j\"\n- line 9: no property: "
         "\"nonsense\"\n- EMAIL: TYPE=HOME of \"h\"\n- TEL: TYPE=WORK of \"1\"\n- EMAIL: TYPE=WORK of "
         "\"w\"\n"},
        {"", old + "X-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Jo;1;\nX-ANDROID-CUSTOM:other;1\n",
         "nickname=Jo\n- X-ANDROID-CUSTOM: \"other;1\"\n"},
        {"a card in the card", old + "TEL:1\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nTEL:2\nEND:VCARD\nTEL:3\n",
         "phone=1\nphone2=3\n- AGENT: a card in the card\n"},
    };
    for (const Reading& reading : readings) {
        // Line ends of every system.
        for (const char* const end : {"\n", "\r\n", "\r"}) {
            std::string card = reading.card;
            std::erase(card, '\r');
            card = "BEGIN:VCARD\n" + card + "END:VCARD\n";
            std::string file;
            for (const char c : card)
                file += c == '\n' ? std::string(end) : std::string(1, c);
            std::string expected = reading.told;
            if (std::string_view(reading.what).starts_with("base64"))  // with a NUL in its picture
                expected = "phone=1\njpg:" + std::string("\xFF\xD8\xFF\xE0\x00\x10", 6) + "\ngif:GIF89a\n";
            EXPECT_EQ(expected, told(readCards(file, "f"))) << card;
        }
    }
}

TEST(CardFile, SaysWhereWhatCouldNotBeRead) {
    const std::string card = "BEGIN:VCARD\nVERSION:3.0\nN:Ä\nEND:VCARD\n";
    const std::pair<std::string, const char*> files[] = {
        {"", "! f:1: there is no card in this file\n"},
        {"\xEF\xBB\xBF" + card + "\n\n" + card, "lastName=Ä\n--\nlastName=Ä\n"},
        {"\xFF\xFE" + toUtf16Bytes(fromUtf8(card)), "lastName=Ä\n"},
        {toUtf16Bytes(fromUtf8(card)), "lastName=Ä\n"},
        {card + "BEGIN:VCARD\nN:B\nTEL:+49 1",
         "lastName=Ä\n! f:5: the file ends in the middle of the card that begins here\n"},
        {"BEGIN:VCARD\nN:B\n" + card,
         "lastName=B\n- END: missing; the next card begins at line 3\n--\nlastName=Ä\n"},
        {"so\nwhat\n" + card + "BEGIN:VCALENDAR\nBEGIN:VEVENT\nEND:VEVENT\nEND:VCALENDAR\n" + card,
         "lastName=Ä\n--\nlastName=Ä\n! f:1: what stands here is in no card\n! f:7: \"VCALENDAR\" is no "
         "card\n"},
        {"BEGIN:VCARD\nX-A:1\nEND:VCARD\n",
         "! f:1: the card holds nothing that a phone can hold (X-A: \"1\")\n"},
        {"BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:Us\nEND:VCARD\n",
         "! f:1: a list of contacts (\"Us\"), and no contact\n"},
    };
    for (const auto& [file, expected] : files)
        EXPECT_EQ(expected, told(readCards(file, "f"))) << file;
    const std::string latin = "BEGIN:VCARD\nN:\xB1\nEND:VCARD\n";
    EXPECT_EQ("lastName=ą\n", told(readCards(latin, "f", "ISO-8859-2")));
    EXPECT_EQ("lastName=±\n", told(readCards(latin, "f")));
}

// A component takes the form of the one around it.
TEST(ContentLines, AreThoseOfCalendarsToo) {
    const std::string part =
        "\nBEGIN:VEVENT\nA;X=^':1\n 2\nB;QUOTED-PRINTABLE:=\n=41\nC/D:e\nEND:VEVENT\nEND:V\nF:\n";
    const std::pair<std::string, std::string> files[] = {
        {"2.0", "5 A[\"]=12 7 B=A 9 =C/D:e 10 END=VEVENT 11 END=V 12 F= "},
        {"1.0", "5 A[^']=1 2 7 B=A 9 =C/D:e 10 END=VEVENT 11 END=V 12 F= "},
    };
    for (const auto& [version, expected] : files) {
        ContentLineReader reader("BEGIN:V\nP:\nVERSION:" + version + part);
        std::string text;
        for (ContentLine line; reader.next(line);) {
            if (line.number < 5) continue;
            text += std::to_string(line.number) + " " + line.name;
            if (!line.parameters.empty()) text += "[" + line.parameters[0].value + "]";
            text += "=" + line.value + " ";
        }
        EXPECT_EQ(expected, text);
    }
}

// Another program finds in a card what the contact holds.
TEST_F(Cards, AreReadByAnotherProgram) {
    ContactDraft contact{std::vector<std::vector<Text>>(fieldRows().size()), {}, {}, {}};
    const auto put = [&](Long code, const char16_t* value) { contact.values[rowOf(code)] = {value}; };
    put(HostField::lastName, u"Müller, Söhne");
    put(HostField::firstName, u"Änni");
    put(HostField::mobile, u"+49 171 3920001");
    put(HostField::homePhone, u"030 1");
    put(HostField::email, u"a@example.org");
    put(HostField::homeStreet, u"Lindenstraße 12, Hof");
    put(HostField::homeTown, u"Łódź");
    put(HostField::company, u"Praxis, Mühlbach & Co. mit einem sehr langen Namen, der über eine Zeile geht");
    put(HostField::note,
        u"Schlüssel: bei Käthe; \\ Hund, ja.\n日本 \U0001F600 "
        u"ende");
    for (const char* const number : {"2.1", "3.0", "4.0"}) {
        std::ofstream(folder.path() / "card.vcf") << writeCard(contact, *cardVersion(number));
        ASSERT_EQ(0, runLine("gammu convertbackup card.vcf read.backup").status);
        const std::string read = contentOf(folder.path() / "read.backup");
        for (const std::vector<Text>& values : contact.values)
            for (const Text& value : values) {
                // In its file texts are hexadecimal.
                std::string units, same;
                for (const char16_t c : value) {
                    char digits[5];
                    std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned>(c));
                    units += c == u'\n' && number[0] == '2' ? std::string("000D000A") : digits;
                }
                EXPECT_NE(std::string::npos, read.find("Unicode = " + units + "\r\n"))
                    << number << toUtf8(value) << read;
            }
    }
}

}  // namespace

}  // namespace ovno2::host
