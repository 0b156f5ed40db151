#include "platform/ErrorAlert.h"
#include "platform/Exceptions.h"
#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Path.h"

#include "tests/platform/ScratchFolder.h"

#include <gtest/gtest.h>

namespace {

using platform::errorAlertFor;
using platform::errorAlertForException;

TEST(ErrorAlert, AFailingFileOpenShowsTheMessageOnTheNextLineWithAFullStop) {
    testsupport::ScratchFolder folder;
    std::exception_ptr failure;
    try {
        OrlFiles::File::openForReading(OrlFiles::Path::parse(folder.file("missing.tdrn")));
    } catch (...) {
        failure = std::current_exception();
    }
    ASSERT_TRUE(failure);
    const auto alert = errorAlertForException(failure);
    ASSERT_TRUE(alert.has_value());
    EXPECT_EQ(alert->title, "Tendrane");
    EXPECT_EQ(alert->text,
              "The operation could not be performed due to the following error:\n"
              "Error opening file [2 : No such file or directory].");
}

TEST(ErrorAlert, CancellingADialogShowsNothing) {
    EXPECT_FALSE(errorAlertForException(std::make_exception_ptr(UserCancelledException())).has_value());
}

TEST(ErrorAlert, AnEmptyMessageIsAnUnexpectedError) {
    const auto alert = errorAlertFor("");
    EXPECT_EQ(alert.title, "Tendrane");
    EXPECT_EQ(alert.text, "The operation could not be performed due to an unknown / unexpected error.");
}

TEST(ErrorAlert, AnExceptionOfNoKnownKindIsAnUnexpectedError) {
    const auto alert = errorAlertForException(std::make_exception_ptr(42));
    ASSERT_TRUE(alert.has_value());
    EXPECT_EQ(alert->text, "The operation could not be performed due to an unknown / unexpected error.");
}

TEST(ErrorAlert, AStandardExceptionShowsItsMessage) {
    const auto alert = errorAlertForException(std::make_exception_ptr(EOFException()));
    ASSERT_TRUE(alert.has_value());
    EXPECT_EQ(alert->text, "The operation could not be performed due to the following error:\nEnd of file error.");
}

TEST(ErrorAlert, AMessageEndingInAFullStopGetsAnotherOne) {
    EXPECT_EQ(errorAlertFor("Done.").text, "The operation could not be performed due to the following error:\nDone..");
}

TEST(ErrorAlert, CaretCodesInsideTheMessageAreNotReplacedAgain) {
    EXPECT_EQ(errorAlertFor("x ^E ^S ^Q").text,
              "The operation could not be performed due to the following error:\nx ^E ^S ^Q.");
}

TEST(ErrorAlert, AScriptFailureShowsMessageAndStack) {
    const auto alert = platform::scriptErrorAlert("Undefined variable : x", "... <!> x\n");
    EXPECT_EQ(alert.title, "Tendrane");
    EXPECT_EQ(alert.text, "Internal script-code error: Undefined variable : x\n\nStack\n----------\n... <!> x\n");
}

TEST(ErrorAlert, TheCataloguePassedInGivesTheTexts) {
    class Catalogue final : public platform::TextCatalogue {
    public:
        std::string translate(std::string_view key) const override {
            if (key == "Error: ^E")
                return "Fehler: ^E!";
            return std::string(key);
        }
    };
    const Catalogue catalogue;
    EXPECT_EQ(errorAlertFor("kaputt", catalogue).text, "Fehler: kaputt!");
    // A key with no entry stands for itself.
    EXPECT_EQ(errorAlertFor("", catalogue).text, "Unexpected error");
}

TEST(ErrorAlert, TheBuiltInTableAnswersAnUnknownKeyWithTheKey) {
    EXPECT_EQ(platform::builtInErrorTexts().translate("No programs found"), "No programs found");
}

TEST(ScriptErrorPosition, ShortSourceHasNoEllipsis) {
    EXPECT_EQ(platform::scriptErrorPositionLine("a = b + ;", 8), "a = b +  <!> ;\n");
}

TEST(ScriptErrorPosition, MoreThanTwentyBytesBeforeTheFaultAreCutWithAnEllipsis) {
    const std::string source = "0123456789abcdefghijKLMNOPQRSTUVWXYZ0123456789";
    // 22 bytes before the position: the first two are dropped.
    EXPECT_EQ(platform::scriptErrorPositionLine(source, 22), "...23456789abcdefghijKL <!> MNOPQRSTUVWXYZ012345\n");
}

TEST(ScriptErrorPosition, ExactlyTwentyBytesBeforeTheFaultShowNoEllipsis) {
    const std::string source = "0123456789abcdefghij!";
    EXPECT_EQ(platform::scriptErrorPositionLine(source, 20), "0123456789abcdefghij <!> !\n");
}

TEST(ScriptErrorPosition, APositionAtTheEndShowsNothingAfterTheMarker) {
    EXPECT_EQ(platform::scriptErrorPositionLine("abc", 3), "abc <!> \n");
    EXPECT_EQ(platform::scriptErrorPositionLine("abc", 99), "abc <!> \n");
}

}  // namespace
