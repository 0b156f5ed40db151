// The two exception families. Failures travel as exceptions, each with a
// fixed message returned by what(), up to the boundary of a host call (where
// they are swallowed) or of an interface event (where they become an alert).
#pragma once

#include <exception>
#include <string>

// ---------------------------------------------------------------------------
// Plain classes: one message text each.

class Exception : public std::exception {
public:
    explicit Exception(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// Reading past the end of binary data.
class EOFException : public Exception {
public:
    EOFException() : Exception("End of file error") {}
};

// Data of the wrong form: "Invalid data format", alone or with its cause.
class FormatException : public Exception {
public:
    enum class Cause { invalidProjectCode, dataIntegrityCheckFailed, unsupportedVersion };

    FormatException() : Exception("Invalid data format") {}
    explicit FormatException(Cause cause) : Exception(messageFor(cause)) {}
    explicit FormatException(std::string message) : Exception(std::move(message)) {}

    static const char* messageFor(Cause cause) {
        switch (cause) {
        case Cause::invalidProjectCode: return "Invalid data format (invalid project code)";
        case Cause::dataIntegrityCheckFailed: return "Invalid data format (data integrity check failed)";
        case Cause::unsupportedVersion: return "Invalid data format (unsupported version)";
        }
        return "Invalid data format";
    }
};

// A dialog was cancelled. Never shown: the alert boundary drops it.
class UserCancelledException : public std::exception {
public:
    const char* what() const noexcept override { return "User cancelled"; }
};

// ---------------------------------------------------------------------------
// The Kvx tree: a class per cause.

namespace Kvx {

class xException : public std::exception {
public:
    xException() = default;
    explicit xException(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// An exception whose message is a key of the string catalogue: what() gives
// the key, and the interface shows the catalogue's text for it.
class xExceptionWithRCString : public xException {
public:
    using xException::xException;
};

class xInvalidFormat : public xExceptionWithRCString {
public:
    using xExceptionWithRCString::xExceptionWithRCString;
};

class xRegistryKeyNotOfExpectedType : public xExceptionWithRCString {
public:
    xRegistryKeyNotOfExpectedType() : xExceptionWithRCString("Registry key is not of expected type") {}
};

// Holds the system's error code.
class xOSError : public xException {
public:
    explicit xOSError(long code, std::string message = {}) : xException(std::move(message)), code_(code) {}
    long code() const { return code_; }

private:
    long code_;
};

class xCircularFIFOOverrun : public xException {
public:
    xCircularFIFOOverrun() : xException("Circular FIFO overrun") {}
};

class xMedia : public xException {
public:
    using xException::xException;
};
class xMediaOpenError : public xMedia {
public:
    using xMedia::xMedia;
};
class xMediaReadOutsideMedia : public xMedia {
public:
    using xMedia::xMedia;
};

class xSerialize : public xException {
public:
    using xException::xException;
};
class xObjectIsNotSerializable : public xSerialize {
public:
    using xSerialize::xSerialize;
};
class xObjectIsNotUnserializable : public xSerialize {
public:
    using xSerialize::xSerialize;
};

class xStream : public xException {
public:
    using xException::xException;
};
class xStreamReadError : public xStream {
public:
    using xStream::xStream;
};
class xStreamWriteError : public xStream {
public:
    using xStream::xStream;
};
class xStreamNotReadable : public xStreamReadError {
public:
    using xStreamReadError::xStreamReadError;
};
class xStreamNotWritable : public xStreamWriteError {
public:
    using xStreamWriteError::xStreamWriteError;
};
class xStreamReadBeyondEOF : public xStreamReadError {
public:
    using xStreamReadError::xStreamReadError;
};
class xStreamWriteBeyondEOF : public xStreamWriteError {
public:
    using xStreamWriteError::xStreamWriteError;
};

// Bounds of a fixed buffer; these stand alone.
class xCannotReadBeyondEnd : public std::exception {
public:
    const char* what() const noexcept override { return "Cannot read beyond end"; }
};
class xCannotWriteBeyondEnd : public std::exception {
public:
    const char* what() const noexcept override { return "Cannot write beyond end"; }
};

}  // namespace Kvx

// These two belong to the tree but are named without the namespace.
class xGlobalMutexEnterTimedOut : public Kvx::xExceptionWithRCString {
public:
    // The message's spelling is the system's own and is kept as it is.
    xGlobalMutexEnterTimedOut()
        : Kvx::xExceptionWithRCString("Time out when aquiring access to a shared resource") {}
};

class xInternetException : public Kvx::xExceptionWithRCString {
public:
    using Kvx::xExceptionWithRCString::xExceptionWithRCString;
};

class xWindowsError : public Kvx::xOSError {
public:
    using Kvx::xOSError::xOSError;
};
