#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <sys/stat.h>

#include "server/web/PageFiles.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class PageFilesTest : public ::testing::Test {
protected:
    PageFilesTest() {
        write("pages/index.html", "<p>index</p>");
        write("pages/device.html", "<p>device</p>");
        write("pages/assets/main-1.js", "js");
        write("secret.txt", "secret");
    }

    void write(const std::string& name, const std::string& content) {
        std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
        std::ofstream(folder / name) << content;
    }

    std::string failure() {
        try {
            PageFiles files(folder / "pages");
        } catch (const std::exception& error) {
            return error.what();
        }
        return "none";
    }

    TestSupport::TemporaryDirectory folder;
};

TEST_F(PageFilesTest, FindsFilesByTheirPathAndTheTwoPagesByTheirNames) {
    const PageFiles files(folder / "pages");
    const std::map<std::string, std::pair<std::string, std::string>> expected{
        {"/", {"<p>index</p>", "text/html; charset=utf-8"}},
        {"/index.html", {"<p>index</p>", "text/html; charset=utf-8"}},
        {"/device", {"<p>device</p>", "text/html; charset=utf-8"}},
        {"/assets/main-1.js", {"js", "text/javascript; charset=utf-8"}},
    };
    for (const auto& [path, file] : expected) {
        const PageFile* const found = files.find(path);
        ASSERT_NE(found, nullptr) << path;
        EXPECT_EQ(*found->content, file.first);
        EXPECT_EQ(found->contentType, file.second);
    }
}

TEST_F(PageFilesTest, NothingElseCanBeNamed) {
    std::filesystem::create_symlink(folder / "secret.txt", folder / "pages/link.txt");
    std::filesystem::create_directory_symlink(folder.path(), folder / "pages/up");
    write("pages/.hidden", "x");
    write("pages/.git/config", "x");
    ASSERT_EQ(::mkfifo((folder / "pages/pipe").c_str(), 0600), 0);
    const PageFiles files(folder / "pages");
    for (const auto* path :
         {"", "index.html", "/assets", "/assets/", "/link.txt", "/up/secret.txt", "/../secret.txt", "/.hidden",
          "/.git/config", "/pipe", "//index.html", "/./index.html", "/assets/../index.html", "/INDEX.HTML"}) {
        EXPECT_EQ(files.find(path), nullptr) << path;
    }
    EXPECT_EQ(PageFiles().find("/"), nullptr);
}

TEST_F(PageFilesTest, ReportsWhyAFolderIsUnusable) {
    std::filesystem::resize_file(folder / "pages/assets/main-1.js", PageFiles::maximumSize + 1);
    EXPECT_EQ(failure(), "the pages' folder " + (folder / "pages") + " holds more than 16 MiB");
    std::filesystem::remove(folder / "pages/assets/main-1.js");
    EXPECT_EQ(failure(), "none");
    std::filesystem::remove(folder / "pages/index.html");
    EXPECT_EQ(failure(), "the pages' folder " + (folder / "pages") + " has no index.html");
    std::filesystem::remove_all(folder / "pages");
    EXPECT_EQ(failure(), "cannot read the pages' folder " + (folder / "pages") + ": No such file or directory");
}

}  // namespace SettingsHandlerKit
