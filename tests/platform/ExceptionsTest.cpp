#include "platform/Exceptions.h"
#include "platform/OrlFiles/Exception.h"
#include "platform/OrlThreads/Exception.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

template <class Derived, class Base>
constexpr bool derives = std::is_base_of_v<Base, Derived>;

// The plain classes.
static_assert(derives<Exception, std::exception>);
static_assert(derives<EOFException, Exception>);
static_assert(derives<FormatException, Exception>);
static_assert(derives<UserCancelledException, std::exception>);
static_assert(!derives<UserCancelledException, Exception>);
static_assert(derives<OrlFiles::Exception, std::exception>);
static_assert(!derives<OrlFiles::Exception, Exception>);
static_assert(derives<OrlThreads::Exception, std::exception>);
static_assert(!derives<OrlThreads::Exception, Exception>);

// The tree.
static_assert(derives<Kvx::xException, std::exception>);
static_assert(derives<Kvx::xExceptionWithRCString, Kvx::xException>);
static_assert(derives<Kvx::xInvalidFormat, Kvx::xExceptionWithRCString>);
static_assert(derives<Kvx::xRegistryKeyNotOfExpectedType, Kvx::xExceptionWithRCString>);
static_assert(derives<xGlobalMutexEnterTimedOut, Kvx::xExceptionWithRCString>);
static_assert(derives<xInternetException, Kvx::xExceptionWithRCString>);
static_assert(derives<Kvx::xOSError, Kvx::xException>);
static_assert(derives<xWindowsError, Kvx::xOSError>);
static_assert(derives<Kvx::xCircularFIFOOverrun, Kvx::xException>);
static_assert(derives<Kvx::xMediaOpenError, Kvx::xMedia>);
static_assert(derives<Kvx::xMediaReadOutsideMedia, Kvx::xMedia>);
static_assert(derives<Kvx::xMedia, Kvx::xException>);
static_assert(derives<Kvx::xObjectIsNotSerializable, Kvx::xSerialize>);
static_assert(derives<Kvx::xObjectIsNotUnserializable, Kvx::xSerialize>);
static_assert(derives<Kvx::xSerialize, Kvx::xException>);
static_assert(derives<Kvx::xStream, Kvx::xException>);
static_assert(derives<Kvx::xStreamReadError, Kvx::xStream>);
static_assert(derives<Kvx::xStreamWriteError, Kvx::xStream>);
static_assert(derives<Kvx::xStreamNotReadable, Kvx::xStreamReadError>);
static_assert(derives<Kvx::xStreamReadBeyondEOF, Kvx::xStreamReadError>);
static_assert(derives<Kvx::xStreamNotWritable, Kvx::xStreamWriteError>);
static_assert(derives<Kvx::xStreamWriteBeyondEOF, Kvx::xStreamWriteError>);
static_assert(!derives<Kvx::xStreamReadError, Kvx::xStreamWriteError>);
static_assert(!derives<Kvx::xCannotReadBeyondEnd, Kvx::xException>);
static_assert(!derives<Kvx::xCannotWriteBeyondEnd, Kvx::xException>);

TEST(ExceptionMessages, PlainClassesCarryTheirFixedTexts) {
    EXPECT_STREQ(EOFException().what(), "End of file error");
    EXPECT_STREQ(FormatException().what(), "Invalid data format");
    EXPECT_STREQ(FormatException("Invalid data format : unsupported version").what(),
                 "Invalid data format : unsupported version");
    EXPECT_STREQ(Exception("Could not load text resource").what(), "Could not load text resource");
}

TEST(ExceptionMessages, FormatFailuresNameTheirCause) {
    using Cause = FormatException::Cause;
    EXPECT_STREQ(FormatException(Cause::invalidProjectCode).what(), "Invalid data format (invalid project code)");
    EXPECT_STREQ(FormatException(Cause::dataIntegrityCheckFailed).what(),
                 "Invalid data format (data integrity check failed)");
    EXPECT_STREQ(FormatException(Cause::unsupportedVersion).what(), "Invalid data format (unsupported version)");
    try {
        throw FormatException(Cause::unsupportedVersion);
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Invalid data format (unsupported version)");
    }
}

TEST(ExceptionMessages, TreeClassesCarryTheirFixedTexts) {
    EXPECT_STREQ(Kvx::xRegistryKeyNotOfExpectedType().what(), "Registry key is not of expected type");
    EXPECT_STREQ(xGlobalMutexEnterTimedOut().what(), "Time out when aquiring access to a shared resource");
    EXPECT_STREQ(Kvx::xCannotReadBeyondEnd().what(), "Cannot read beyond end");
    EXPECT_STREQ(Kvx::xCannotWriteBeyondEnd().what(), "Cannot write beyond end");
}

TEST(ExceptionMessages, OsErrorsKeepTheSystemCode) {
    const xWindowsError e(5, "Access is denied");
    EXPECT_EQ(e.code(), 5);
    EXPECT_STREQ(e.what(), "Access is denied");
    try {
        throw xWindowsError(32);
    } catch (const Kvx::xOSError& caught) {
        EXPECT_EQ(caught.code(), 32);
    }
}

TEST(ExceptionMessages, ReadingBeyondTheEndIsCaughtAsAStreamReadError) {
    try {
        throw Kvx::xStreamReadBeyondEOF("Read beyond end of stream");
    } catch (const Kvx::xStreamWriteError&) {
        FAIL() << "a read error is no write error";
    } catch (const Kvx::xStreamReadError& e) {
        EXPECT_STREQ(e.what(), "Read beyond end of stream");
    }
}

TEST(SystemErrorMessages, FileFailuresPutCodeAndTextInBrackets) {
    const OrlFiles::Exception e("Error opening file", 2, "No such file or directory");
    EXPECT_STREQ(e.what(), "Error opening file [2 : No such file or directory]");
    EXPECT_EQ(e.message(), "Error opening file");
    EXPECT_EQ(e.systemCode(), 2);
}

TEST(SystemErrorMessages, FileFailuresWithoutASystemErrorShowTheMessageAlone) {
    const OrlFiles::Exception e("Error interpreting path : ");
    EXPECT_STREQ(e.what(), "Error interpreting path : ");
    EXPECT_EQ(e.systemCode(), 0);
}

TEST(SystemErrorMessages, ThreadFailuresPutCodeAndTextInBrackets) {
    const OrlThreads::Exception e("Error creating thread", 11, "Resource temporarily unavailable");
    EXPECT_STREQ(e.what(), "Error creating thread [11 : Resource temporarily unavailable]");
}

TEST(SystemErrorMessages, TheSystemsOwnTextIsLookedUpForACode) {
    const OrlThreads::Exception e("Error waiting on an event", 22);
    EXPECT_FALSE(e.systemText().empty());
    EXPECT_EQ(std::string(e.what()), "Error waiting on an event [22 : " + e.systemText() + "]");
    EXPECT_EQ(e.systemText().find('\n'), std::string::npos);
}

}  // namespace
