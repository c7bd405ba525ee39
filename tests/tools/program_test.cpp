#include "tests/tools/image_fixture.h"

#include <QProcess>

using namespace kestra;

namespace {

using namespace headboard_image;

TEST_F(ImageUnderTest, BadCommandLinesAndFilesAreToldFromDamage) {
    EXPECT_EQ(run({"list"}).exitCode, kExitUnusable); // there is none
    for (size_t const size : {0, 7, 65537}) {
        write(Bytes(size, 0xFF));
        Outcome const outcome = run({"check"});
        EXPECT_EQ(outcome.exitCode, kExitUnusable);
        EXPECT_NE(outcome.complaint.find("it has " + std::to_string(size) + " bytes"), std::string::npos);
        EXPECT_EQ(run({"format"}).exitCode, kExitUnusable);
        EXPECT_EQ(read().size(), size);
    }
    Bytes const good = imageOf({});
    write(good);
    EXPECT_EQ(run({}).exitCode, kExitUnusable);
    for (char const* const command :
         {"lst", "list 5", "show", "show 5x", "show 0x", "show -5", "list --paged", "check --every", "delete",
          "list --label x", "import a b PGA --paged --sensor poly-12bit", "import a b PGA --label=",
          "delete XYZ", "delete EE_IDENT", "delete END_OF_RECORDS", "delete 256", "import a b", "format now"})
        EXPECT_EQ(run(QString(command).split(' ')).exitCode, kExitUnusable) << command;
    EXPECT_EQ(read(), good);
    Outcome const help = run({"--help"});
    EXPECT_EQ(help.exitCode, kExitDone);
    EXPECT_NE(help.output.find("delete TYPE [NAME]"), std::string::npos);
}

TEST_F(ImageUnderTest, TheProgramHandsOnExitCodesAndTellsAnswersFromComplaints) {
    auto const start = [&](QStringList const& command, QByteArray& output, QByteArray& complaint) {
        QProcess process;
        process.start(QStringLiteral(HEADBOARD_IMAGE), QStringList{image()} + command);
        bool const ended = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit;
        output = process.readAllStandardOutput().replace("\r\n", "\n");
        complaint = process.readAllStandardError().replace("\r\n", "\n");
        return ended ? process.exitCode() : -1;
    };
    QByteArray output, complaint;
    EXPECT_EQ(start({"list"}, output, complaint), kExitUnusable);
    EXPECT_TRUE(output.isEmpty() && complaint.startsWith("headboard-image: cannot read "));
    EXPECT_EQ(start({"format"}, output, complaint), kExitDone);
    EXPECT_EQ(output, "created and formatted\n");
    EXPECT_TRUE(complaint.isEmpty());
    EXPECT_EQ(start({"delete", "PGA"}, output, complaint), kExitRefused);
    EXPECT_EQ(complaint, "headboard-image: there is no record PGA\n");
}

} // namespace
