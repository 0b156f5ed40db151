#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Files.h"
#include "platform/OrlFiles/SafeFileWriter.h"

#include "tests/platform/ScratchFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using OrlFiles::Path;
using OrlFiles::SafeFileWriter;
using Temporary = OrlFiles::SafeFileWriter::Temporary;

std::string contentOf(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void put(const std::string& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// Runs the writer helper; returns its process id and the read end of its output.
struct Child {
    pid_t pid = -1;
    FILE* output = nullptr;

    Child(const std::vector<std::string>& arguments) {
        int pipeFds[2];
        if (pipe(pipeFds) != 0)
            throw std::runtime_error("pipe");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
        std::vector<char*> argv;
        std::string program = TENDRANE_WRITER_CHILD;
        argv.push_back(program.data());
        std::vector<std::string> copies = arguments;
        for (auto& a : copies)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        const int result = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(pipeFds[1]);
        if (result != 0) {
            close(pipeFds[0]);
            throw std::runtime_error("cannot start " + program);
        }
        output = fdopen(pipeFds[0], "r");
    }
    ~Child() {
        if (output)
            fclose(output);
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    std::string readLine() {
        char line[4096] = {};
        if (!fgets(line, sizeof line, output))
            return {};
        std::string s(line);
        if (!s.empty() && s.back() == '\n')
            s.pop_back();
        return s;
    }
    int killAndWait() {
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        return status;
    }
    int wait() {
        int status = 0;
        waitpid(pid, &status, 0);
        pid = -1;
        return status;
    }
};

TEST(SafeFileWriter, WritesANewFileOnlyAtCommit) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("new.tdrn");
    SafeFileWriter writer(Path::parse(destination));
    writer.write("seed 1\n");
    EXPECT_FALSE(std::filesystem::exists(destination));
    writer.commit();
    EXPECT_TRUE(writer.committed());
    EXPECT_EQ(contentOf(destination), "seed 1\n");
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"new.tdrn"});
    EXPECT_TRUE(writer.temporary().empty());
}

TEST(SafeFileWriter, TheOldContentStaysUntilCommit) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old");
    SafeFileWriter writer(Path::parse(destination));
    writer.write("new content");
    EXPECT_EQ(contentOf(destination), "old");
    writer.commit();
    EXPECT_EQ(contentOf(destination), "new content");
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a.tdrn"});
}

TEST(SafeFileWriter, AfterCommitTheStreamIsOnTheDestination) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    SafeFileWriter writer(Path::parse(destination));
    writer.write("12345");
    writer.commit();
    EXPECT_EQ(writer.stream().size(), 5u);
    writer.write("678");
    EXPECT_EQ(contentOf(destination), "12345678");
}

TEST(SafeFileWriter, ANamedTemporaryFileLiesBesideTheDestinationWithItsNameAsPrefix) {
    testsupport::ScratchFolder folder;
    SafeFileWriter writer(Path::parse(folder.file("Warm Pad.tdrn")), Temporary::named);
    const Path temporary = writer.temporary();
    ASSERT_FALSE(temporary.empty());
    EXPECT_EQ(temporary.parent(), Path::parse(folder.path()));
    const std::string name = temporary.utf8().substr(folder.path().size() + 1);
    EXPECT_EQ(name.rfind("Warm Pad-", 0), 0u) << name;
    EXPECT_TRUE(name.ends_with(".tmp")) << name;
    EXPECT_TRUE(std::filesystem::exists(temporary.utf8()));
    writer.commit();
    EXPECT_FALSE(std::filesystem::exists(temporary.utf8()));
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"Warm Pad.tdrn"});
}

TEST(SafeFileWriter, TheTemporaryFileOfADestinationThatIsAFolderGoesIntoThatFolder) {
    testsupport::ScratchFolder folder;
    std::filesystem::create_directory(folder.file("sub"));
    EXPECT_EQ(SafeFileWriter::temporaryFolderFor(Path::parse(folder.file("sub"))), Path::parse(folder.file("sub")));
    EXPECT_EQ(SafeFileWriter::temporaryFolderFor(Path::parse(folder.file("x.tdrn"))), Path::parse(folder.path()));
    SafeFileWriter writer(Path::parse(folder.file("sub")), Temporary::named);
    EXPECT_EQ(writer.temporary().parent(), Path::parse(folder.file("sub")));
}

class DestroyedWriter : public testing::TestWithParam<Temporary> {};

TEST_P(DestroyedWriter, LeavesTheDestinationAndNoTemporaryFile) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old");
    {
        SafeFileWriter writer(Path::parse(destination), GetParam());
        writer.write(std::string(100000, 'x'));
    }
    EXPECT_EQ(contentOf(destination), "old");
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a.tdrn"});
}

TEST_P(DestroyedWriter, AbandonClosesAndRemovesTheTemporaryFile) {
    testsupport::ScratchFolder folder;
    SafeFileWriter writer(Path::parse(folder.file("b.tdrn")), GetParam());
    writer.write("x");
    writer.abandon();
    EXPECT_FALSE(writer.stream().isOpen());
    EXPECT_TRUE(namesIn(folder.path()).empty());
}

INSTANTIATE_TEST_SUITE_P(BothKindsOfTemporaryFile, DestroyedWriter,
                         testing::Values(Temporary::unnamedWherePossible, Temporary::named));

TEST(SafeFileWriter, AWriterKilledBeforeCommitLeavesTheDestinationAndNoTemporaryFile) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old content");
    Child child({"hang", destination});
    const std::string ready = child.readLine();
    ASSERT_EQ(ready.rfind("ready", 0), 0u) << ready;
    const int status = child.killAndWait();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ(contentOf(destination), "old content");
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a.tdrn"});
}

TEST(SafeFileWriter, AKilledWriterWithANamedTemporaryFileLeavesTheDestinationIntact) {
    // Only the destination is promised here: the named kind's file stays
    // behind when its process dies, which is why it is not the default.
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old content");
    Child child({"hang", destination, "named"});
    const std::string ready = child.readLine();
    ASSERT_EQ(ready.rfind("ready ", 0), 0u) << ready;
    child.killAndWait();
    EXPECT_EQ(contentOf(destination), "old content");
    EXPECT_TRUE(std::filesystem::exists(ready.substr(6)));
}

TEST(SafeFileWriter, AFailedWriteLeavesTheDestinationUntouchedAndNoTemporaryFile) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old content");
    Child child({"limit", destination});
    EXPECT_EQ(child.readLine(), "Error writing to file [27 : File too large]");
    const int status = child.wait();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(contentOf(destination), "old content");
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a.tdrn"});
}

TEST(SafeFileWriter, AFailedCommitKeepsTheWriterUsableAndTheDestinationIntact) {
    testsupport::ScratchFolder folder;
    // A folder with a file in it cannot be replaced by a file.
    const std::string destination = folder.file("taken");
    std::filesystem::create_directory(destination);
    put(destination + "/inside.txt", "keep");
    {
        SafeFileWriter writer(Path::parse(destination));
        writer.write("abc");
        try {
            writer.commit();
            FAIL() << "the commit should fail";
        } catch (const OrlFiles::Exception& e) {
            EXPECT_EQ(e.message(), "Error committing file");
            // The rename's own error: which one depends on the file system.
            EXPECT_TRUE(e.systemCode() == EISDIR || e.systemCode() == ENOTEMPTY) << e.what();
            EXPECT_EQ(std::string(e.what()).rfind("Error committing file [", 0), 0u) << e.what();
        }
        EXPECT_FALSE(writer.committed());
        writer.write("def");
        EXPECT_EQ(writer.stream().size(), 6u);
    }
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"taken"});
    EXPECT_EQ(namesIn(destination), std::vector<std::string>{"inside.txt"});
    EXPECT_EQ(contentOf(destination + "/inside.txt"), "keep");
}

TEST(SafeFileWriter, ATemporaryFileInAMissingFolderCannotBeMade) {
    testsupport::ScratchFolder folder;
    try {
        SafeFileWriter writer(Path::parse(folder.file("missing/a.tdrn")));
        FAIL();
    } catch (const OrlFiles::Exception& e) {
        EXPECT_STREQ(e.what(), "Error creating temporary file [2 : No such file or directory]");
    }
}

TEST(SafeFileWriter, ACommitOverAnExistingFileKeepsItsCreationTime) {
    if (!OrlFiles::canSetCreationTime())
        GTEST_SKIP() << "This system has no call that sets a file's creation (birth) time, so a file "
                        "replaced by a rename has the new file's. What the commit keeps here instead "
                        "is the old file's permissions (see the test after this one).";
    testsupport::ScratchFolder folder;
    const Path destination = Path::parse(folder.file("a.tdrn"));
    put(destination.utf8(), "old");
    const OrlFiles::FileTime past{125000000000000000};  // 1997
    OrlFiles::setTimes(destination, past, past, past);
    SafeFileWriter writer(destination);
    writer.write("new");
    writer.commit();
    const auto info = OrlFiles::fileInfo(destination);
    ASSERT_TRUE(info.creation.has_value());
    EXPECT_EQ(*info.creation, past);
    EXPECT_GT(info.lastWrite, past);
}

TEST(SafeFileWriter, ACommitOverAnExistingFileKeepsItsPermissions) {
    testsupport::ScratchFolder folder;
    const std::string destination = folder.file("a.tdrn");
    put(destination, "old");
    ASSERT_EQ(chmod(destination.c_str(), 0640), 0);
    SafeFileWriter writer(Path::parse(destination));
    writer.write("new");
    writer.commit();
    struct stat st {};
    ASSERT_EQ(stat(destination.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST(SafeFileWriter, TheReplacedFilesTimesAreThoseOfTheNewContent) {
    testsupport::ScratchFolder folder;
    const Path destination = Path::parse(folder.file("a.tdrn"));
    put(destination.utf8(), "old");
    const OrlFiles::FileTime past{125000000000000000};  // 1997
    OrlFiles::setTimes(destination, std::nullopt, past, past);
    SafeFileWriter writer(destination);
    writer.write("new");
    writer.commit();
    const auto info = OrlFiles::fileInfo(destination);
    EXPECT_GT(info.lastWrite, past);
    EXPECT_GT(info.lastAccess, past);
}

}  // namespace
