// Opening amplifier files, good and bad, with the words of each failure; saving them.
#include "tests/station/rig.h"

namespace ampdesk {
namespace {

// A check that is left out or comes too late, a text that is not the fixed one, a failure that
// leaves a head or the port open.
TEST(OpeningFails, InTheseWords) {
    const auto file = [](const char* port, const char* baud, const char* address) {
        return Rig::file(address, port, baud);
    };
    struct Words {
        std::string automatic;    // at the start of the program
        std::string interactive;  // Amplifier > Open
        Words operator|(const std::string& cause) const {
            return {automatic + "|" + cause, interactive + "|" + cause};
        }
    };
    const Words corrupted{"Default Settings For Serial Port Corrupted In File com9.dat",
                          "Default settings for serial port corrupted"};
    const Words used{"The HPA Address In File com9.dat Is Used, Please Pick Up Another One.",
                     "The HPA Address Is Used, Please Pick Up Another One."};
    const Words failed{"Serial Initialization Failed For File com9.dat", "Serial Initialization Failed"};
    const Words wrong{"Serial Settings In File com9.dat Are Not Right",
                      "Serial Settings Are Probably Not Right, Select Settings Again When Not Communicating"};
    const std::string no_serial = "Failed To Read SerialNumber For File com9.dat|";
    const std::string too_large = "|Serial number 99999999999 is too large";
    const std::string other_line = "The bus is in use on COM1: with 9600,n,8,1";
    const struct {
        std::string bytes;  // of com9.dat; empty: there is none
        Words said;
        bool other_open = false;  // amplifier 1 is open on COM1: with 9600 baud
        const char* lost_request = "";
        PortResult open_result{};
    } table[] = {
        {"", {"Couldn't find file com9.dat|", corrupted.interactive + "|File not found"}},
        {"RS-422\r\nCOM1:\r\n6\r\n2\r\n", corrupted | ""},
        {"RS-485\r\nCOM1:\r\n", corrupted | "\"\" is no address from 0 to 99"},
        {file("COM1:", "6", "100"), corrupted | "\"100\" is no address from 0 to 99"},
        {file("COM2:", "6", "1"), used | "", true},
        {file("COM1:", "8", "2"), failed | "The file holds no baud code from 0 to 7"},
        {file("COM2:", "6", "2"), failed | other_line, true},
        {file("COM1:", "7", "2"), failed | other_line, true},
        {file("COM1:", "6", "2"), failed | "not there", false, "", {PortError::not_found, "not there"}},
        {file("COM1:", "6", "50"), wrong | "", true},
        {file("COM1:", "6", "2"), {no_serial, ""}, false, "RDS/N"},
        {file("COM1:", "6", "2"), {"Failed To Read *IDN For File com9.dat|", ""}, false, "*IDN?"},
        {file("COM1:", "6", "9"), {no_serial + too_large.substr(1), "Overflow" + too_large}},
    };
    for (const auto& row : table)
        for (const bool interactive : {false, true}) {
            SCOPED_TRACE(row.said.automatic + (interactive ? ", interactive" : ", automatic"));
            Rig rig;
            rig.sim.add({.address = 9, .serial = 99'999'999'999});
            if (row.other_open)
                rig.open({1});
            if (!row.bytes.empty())
                rig.folder.put("com9.dat", row.bytes);
            rig.port.lost_request = row.lost_request;
            rig.port.open_result = row.open_result;
            if (interactive)
                rig.station.open_amplifier_file(rig.folder / "com9.dat");
            else
                rig.station.auto_open_dat_files({"com9.dat"});
            rig.let_start();
            std::string said;
            for (const Message& message : rig.person.messages) said += message.text + "|" + message.detail;
            EXPECT_EQ(said, interactive ? row.said.interactive : row.said.automatic);
            EXPECT_EQ(rig.station.open_count(), row.other_open ? 1 : 0);
            EXPECT_EQ(rig.bus.settings(),
                      row.other_open ? std::optional(LineSettings{"COM1:", 9600, 0, 8, 1}) : std::nullopt);
        }
}

class AmplifierFiles : public StationTest {
  protected:
    void add(std::int16_t address, const std::string& number) {
        station.add_amplifier(address, number, "KU");
        let_start();
    }
};

// The start of the program waits for an answer about colours, or an opening by hand does not ask; a question
// that outlives its head.
TEST_F(AmplifierFiles, RestoreColoursWithTheQuestionOnlyWhenOpenedByHand) {
    folder.put("set1001.dat", "Color Settings\r\n 255\r\n 0\r\n 13\r\n 0\r\n");
    open({1});
    EXPECT_EQ(head(1).panel().look().fore_colour, 255);
    station.close_all();
    person.answers = {Answer::no};
    station.open_amplifier_file(folder / "com1001.dat");
    let_start();
    EXPECT_NE(head(1).panel().look().fore_colour, 255);
    station.close_all();
    station.new_amplifier_window(1, "1001", "KU", true);
    const std::string question = "The settings for this HPA already exist, do you want to restore ? ";
    EXPECT_EQ(person.take_texts(), (Texts{question, question}));
    station.close_all();
    EXPECT_TRUE(person.take_replies().empty());
}

// One bad file keeps the rest from opening, the hundred-and-first name is opened, or a window or a
// question stands behind Close All.
TEST_F(AmplifierFiles, AreTriedOneAfterAnother) {
    open({1, 50, 2});
    EXPECT_EQ(person.take_texts(), Texts{"Serial Settings In File com1050.dat Are Not Right"});
    EXPECT_EQ(open_slots(), (std::vector{1, 2}));
    EXPECT_EQ(port.opened.size(), 1U);  // the line that is open serves both
    station.close_all();

    Texts names(100, "missing.dat");
    names.emplace_back("com1001.dat");
    station.auto_open_dat_files(names);
    let_start();
    EXPECT_EQ(person.take_texts().size(), 100U);
    EXPECT_EQ(station.open_count(), 0);

    for (const bool in_the_middle : {false, true}) {
        station.auto_open_dat_files({"com1001.dat", "com1002.dat"});
        if (in_the_middle)
            station.step();
        EXPECT_EQ(bus.under_way(), in_the_middle);
        station.close_all();
        poll(2s);
        EXPECT_EQ(station.open_count(), 0);
    }
    port.lost_request = "RDS/N";
    station.open_amplifier_file(folder / "com1001.dat");
    for (; person.prompts.empty(); clock.advance(1ms)) station.step();
    station.close_all();
    station.step();
    EXPECT_TRUE(person.take_replies().empty());
}

// A file that does not open, or whose first screen does not come, takes the line away from the remote station
// that was using it, unsaid when it does not come back; colours are kept of a head that nobody has seen.
TEST_F(AmplifierFiles, GiveTheLineBack) {
    bus.open_bus_port("COM3:", 1200, 1, 7, 2);
    open({50});
    port.lost_request = "\x01\x12";  // the analog values
    open({1});
    EXPECT_EQ(person.take_texts().size(), 2U);
    EXPECT_EQ(bus.settings(), (LineSettings{"COM3:", 1200, 1, 7, 2}));
    EXPECT_FALSE(std::filesystem::exists(folder / "set1001.dat"));

    port.open_result = {PortError::in_use, "in use"};
    open({50});
    EXPECT_EQ(person.take_texts(), (Texts{"Serial Initialization Failed For File com1050.dat",
                                          "The line on COM3: with 1200,o,7,2 could not be opened again"}));
}

// A new amplifier's file that is not the copy of "rs485.dat", or leads to another address or line, the
// next time the amplifier is opened, than it has now; an old one that is overwritten unasked.
TEST_F(AmplifierFiles, AreMadeForNewAmplifiers) {
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    const std::string odd = "RS-485 \nCOM1:\n 6\n 4";
    for (const std::string& fields :
         {std::string(), odd, file("4", "COM2:"), file("4", "COM1:", "3"), file("3"), std::string("torn")}) {
        if (!fields.empty())  // else it could not be written
            folder.put("rs485.dat", fields);
        add(4, "1004");
        EXPECT_EQ(file_bytes(folder / "com1004.dat"), fields == odd ? odd : file("4")) << fields;
        station.close_all();
        for (const char* kept : {"com1004.dat", "set1004.dat"}) std::filesystem::remove(folder / kept);
    }
    const std::pair<std::string, std::string> old_files[] = {
        {"RS-485\nCOM1:\n 6\n 3\n", ""},  // not asked
        {file("7"), "holds address 7"},
        {file("3", "COM2:"), "holds another port or baud rate"},
        {file("3", "COM1:", "7"), "holds another port or baud rate"},
        {"RS-485\r\nCOM1:\r\n", "is damaged"}};
    for (const auto& [held, state] : old_files)
        for (const Answer answer : {Answer::no, Answer::yes}) {
            SCOPED_TRACE(held);
            const std::string path = folder.put("com1003.dat", held);
            person.answers = {answer};
            add(3, "1003");
            EXPECT_EQ(station.open_count(), 1);
            station.close_all();
            std::filesystem::remove(folder / "set1003.dat");
            EXPECT_EQ(file_bytes(path), !state.empty() && answer == Answer::yes ? file("3") : held);
            Texts asked = person.take_texts();
            EXPECT_EQ(asked, Texts(asked.size(), "File com1003.dat " + state + ". Replace it?"));
            EXPECT_EQ(asked.empty(), state.empty());
        }
}

// Two heads on one address: both openings began before either had come to its end.
TEST_F(AmplifierFiles, OfAnAddressThatWasTakenMeanwhile) {
    const std::string path = folder.put("com1003.dat", file("3"));
    station.open_amplifier_file(path);
    station.step();
    station.add_amplifier(3, "1003", "KU");
    poll(2s);
    EXPECT_EQ(person.take_texts(), Texts{"The HPA Address Is Used, Please Pick Up Another One."});
    station.add_amplifier(3, "1003", "KU");
    EXPECT_EQ(person.take_texts(), Texts{"This Address Is Used, Please Pick Up Another One."});
    EXPECT_EQ(station.open_count(), 1);
}

// Save writes what is not in use, as a line that was tried and did not open, or Save As changes the
// amplifier's own file.
TEST_F(AmplifierFiles, AreSaved) {
    const std::string second = file("2", "COM3:", "7");
    folder.put("a.dat", file("1", "COM3:", "7"));
    folder.put("b.dat", second);
    station.auto_open_dat_files({"a.dat", "b.dat"});
    let_start();
    station.save(head(2));
    EXPECT_EQ(file_bytes(folder / "com1002.dat"), second);
    EXPECT_TRUE(file_bytes(folder / "set1002.dat").starts_with("Color Settings"));
    EXPECT_EQ(file_bytes(folder / "com1001.dat"), "");
    station.save_all();
    EXPECT_EQ(file_bytes(folder / "com1001.dat"), file("1", "COM3:", "7"));
    station.save_as(2, folder / "copy.dat");
    EXPECT_EQ(file_bytes(folder / "copy.dat"), second);

    port.open_result = {PortError::not_found, "not there"};
    bus.open_bus_port("COM1:", 1200, 0, 8, 1);
    const std::string colours = folder.put("set1002.dat", "");
    station.save(head(2));
    EXPECT_EQ(person.take_texts(), Texts{"No line to the amplifiers is open"});
    EXPECT_EQ(file_bytes(folder / "com1002.dat"), second);
    EXPECT_NE(file_bytes(colours), "");
    std::filesystem::remove(colours);
    station.close_all();
    EXPECT_NE(file_bytes(colours), "");
}

}  // namespace
}  // namespace ampdesk
