// "ampdesk.ini" and the command line, good and bad.
#include <gtest/gtest.h>

#include "shell/program_options.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

SiteConfigurationReport read(const std::string& bytes) {
    const ScratchFolder folder;
    return read_site_configuration(folder.put("ampdesk.ini", bytes));
}

// A key that is read into the wrong value, not at all, or read and not used; a port of the command line that
// the file's goes before.
TEST(ProgramOptions, EveryKeyReachesItsUser) {
    const CommandLine line =
        parse_command_line({"--port", "COM4:=/dev/ttyS9", "--demo", "com1.dat", "com2.dat"});
    const auto [station, window] = program_options(
        line,
        read("\xEF\xBB\xBF; made by hand\r\n[ports]\r\nCOM1 = /dev/x=y \r\ncom4:=/dev/ttyUSB0\r\n\r\n"
             "[crc]\npolynomial=0x8408\ninitial=65535\n# models\n[Models]\nTL 12/K = 3\nT7=0\n"
             "[identity]\npattern2=[a-z\npattern1=^(.*)-A;#1$\nreplace1 = Rev $1\nreplace2=x\n"
             "[gauge]\nminimum=-10.5\nmaximum=6e1\n"
             "[amplifier]\nnegative_words=Signed\nreply_address=checked\nrest=1\n"),
        "/shipped", false);
    EXPECT_EQ(station.bus.crc, (CrcParameters{0x8408, 0xFFFF}));
    EXPECT_EQ(station.bus.reply_address, ReplyAddress::checked);
    EXPECT_EQ(station.heads.negative_words, NegativeWords::two_complement);
    EXPECT_EQ(station.heads.model_capabilities, (std::map<std::string, int>{{"TL 12/K", 3}, {"T7", 0}}));
    ASSERT_EQ(station.heads.identity_patterns.size(), 1U);
    EXPECT_EQ(station.heads.identity_patterns[0].pattern, "^(.*)-A;#1$");
    EXPECT_EQ(station.heads.identity_patterns[0].replacement, "Rev $1");
    EXPECT_EQ(station.heads.shipped_folder, "/shipped");
    EXPECT_EQ(window.shipped_folder, "/shipped");
    for (const PortMap& ports : {station.bus.ports, window.ports})
        EXPECT_EQ(ports.device(1) + ports.device(4), "/dev/x=y/dev/ttyS9");
    EXPECT_EQ(window.gauge.minimum, -10.5);
    EXPECT_EQ(window.gauge.maximum, 60);
    EXPECT_EQ(window.models, (Texts{"TL 12/K", "T7"}));
    EXPECT_EQ(window.amplifier_files, (Texts{"com1.dat", "com2.dat"}));
    EXPECT_TRUE(window.demonstration);
    ASSERT_EQ(window.notices.size(), 2U);
    EXPECT_EQ(window.notices[0].text, "The program's folder cannot be written");
    EXPECT_EQ(window.notices[1].detail,
              "ampdesk.ini line 14: bad value for pattern2: [a-z\n"
              "ampdesk.ini line 24: unknown key rest in [amplifier]");

    const auto [quiet_station, quiet] =
        program_options({}, read("[amplifier]\nreply_address=ignored\n"), "", true);
    EXPECT_EQ(quiet_station.bus.reply_address, ReplyAddress::ignored);
    EXPECT_TRUE(quiet.notices.empty());
    EXPECT_FALSE(quiet.demonstration);
}

// A bad line that is swallowed, reported on the wrong line, or takes the good ones with it.
TEST(SiteConfiguration, ReportsWhatItDoesNotTake) {
    const struct {
        std::string bytes;
        std::string warning;  // without "ampdesk.ini line "
    } table[] = {
        {"[port]\nCOM1=x\nCOM2=y\n", "1: unknown section [port]"},
        {"[ports\nCOM1=x\n", "1: unknown section [ports"},
        {"COM1=x\n", "1: a key before the first section"},
        {"[ports]\nCOM5=x\n", "2: unknown key COM5 in [ports]"},
        {"[ports]\nCOM1=\n", "2: bad value for COM1: "},
        {"[ports]\n\nCOM1\n", "3: neither a section nor a key with a value"},
        {"[crc]\npolynomial=0x1A001\n", "2: bad value for polynomial: 0x1A001"},
        {"[crc]\npolynomial=0\n", "2: bad value for polynomial: 0"},
        {"[crc]\ninitial=A001\n", "2: bad value for initial: A001"},
        {"[models]\nX=5\n", "2: bad value for X: 5"},
        {"[models]\nA=1\nB=1\nC=1\nD=1\nE=1\nF=1\nG=1\nH=1\nI=1\n",
         "10: more than eight models, I is left out"},
        {"[identity]\npattern1=(a\nreplace1=b\n", "2: bad value for pattern1: (a"},
        {"[identity]\npattern1=" + std::string(60'000, '(') +
             "\nreplace1=b\n",  // one level of recursion each
         "2: bad value for pattern1: " + std::string(60, '(')},
        {"[identity]\npattern1=a{1,99999999999999999999}\nreplace1=b\n",
         "2: bad value for pattern1: a{1,99999999999999999999}"},
        {"[identity]\npattern1=a\n", "2: pattern1 has no replace1"},
        {"[identity]\nreplace3=a\n", "2: replace3 has no pattern3"},
        {"[identity]\npattern=a\n", "2: unknown key pattern in [identity]"},
        {"[gauge]\nmaximum=inf\n", "2: bad value for maximum: inf"},
        {"[gauge]\nminimum=70\n", "2: the gauge's minimum must be below its maximum"},
        {"[amplifier]\nnegative_words=yes\n", "2: bad value for negative_words: yes"},
        {"[amplifier]\nreply_address=always\n", "2: bad value for reply_address: always"},
        {"[amplifier]\nreply_adress=checked\n", "2: unknown key reply_adress in [amplifier]"},
    };
    const SiteConfiguration defaults;
    for (const auto& row : table) {
        SCOPED_TRACE(row.bytes);
        const auto [site, warnings] = read(row.bytes);
        EXPECT_EQ(warnings, Texts{"ampdesk.ini line " + row.warning});
        EXPECT_TRUE(site.identity_patterns.empty());
        EXPECT_EQ(site.crc, defaults.crc);
        EXPECT_EQ(site.gauge_minimum, defaults.gauge_minimum);
        EXPECT_EQ(site.gauge_maximum, defaults.gauge_maximum);
        EXPECT_LE(site.models.size(), 8U);
    }
}

// A file that is no configuration at all fills the screen with warnings or stops the start.
TEST(SiteConfiguration, SurvivesAnyFile) {
    std::string noise;
    for (unsigned i = 0; i < 1U << 20; ++i) noise += static_cast<char>((i * 7919) >> 3);
    const Texts warnings = read(noise).warnings;
    ASSERT_EQ(warnings.size(), 21U);
    for (const std::string& warning : warnings) EXPECT_LT(warning.size(), 200U);
}

// An argument taken for another, a bad one that is let through, or a file too many.
TEST(CommandLine, GoodOnes) {
    const CommandLine all =
        parse_command_line({"--folder", "/srv/x", "--demo=12", "--port", "COM1:=/dev/ttyUSB0", "com1.dat",
                            "--port=com3=/dev/a=b", "--", "-x"});
    EXPECT_EQ(all.error, "");
    EXPECT_EQ(all.folder, "/srv/x");
    EXPECT_EQ(all.demo, 12);
    EXPECT_EQ(all.ports, (std::vector<std::pair<int, std::string>>{{1, "/dev/ttyUSB0"}, {3, "/dev/a=b"}}));
    EXPECT_EQ(all.amplifier_files, (Texts{"com1.dat", "-x"}));
    EXPECT_EQ(parse_command_line({"--demo", "5"}).demo, 3);
    EXPECT_EQ(parse_command_line({"--demo", "5"}).amplifier_files, Texts{"5"});
    EXPECT_TRUE(parse_command_line({"--version"}).version);
    EXPECT_TRUE(parse_command_line({"--help", "com1.dat"}).help);
    EXPECT_EQ(parse_command_line(Texts(150, "com1.dat")).amplifier_files.size(), 100U);
}

TEST(CommandLine, BadOnes) {
    const struct {
        Texts arguments;
        std::string error;
    } table[] = {
        {{"--demo=0"}, "--demo takes a number from 1 to 99"},
        {{"--demo=100"}, "--demo takes a number from 1 to 99"},
        {{"--demo=3x"}, "--demo takes a number from 1 to 99"},
        {{"--folder"}, "--folder needs a value"},
        {{"--port", "COM1:="}, "--port takes COM1:=DEVICE to COM4:=DEVICE, not COM1:="},
        {{"--port", "COM5:=/dev/x"}, "--port takes COM1:=DEVICE to COM4:=DEVICE, not COM5:=/dev/x"},
        {{"-v"}, "unknown option -v"},
        {{"--help=yes"}, "unknown option --help=yes"},
    };
    for (const auto& row : table) EXPECT_EQ(parse_command_line(row.arguments).error, row.error);
}

}  // namespace
}  // namespace ampdesk
