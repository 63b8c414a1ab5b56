#include "panel/FileTypes.h"

#include <gtest/gtest.h>

namespace companion::testing {

static std::string typeOf(const std::string& fileName)
{
    const std::string extension = fileExtension(fileName);
    return fileTypeText(fileCategory(extension, panelFileTypes()), extension);
}

TEST(FileTypesTest, ListsAreTheseInThisOrder)
{
    const FileTypeLists lists = panelFileTypes();
    EXPECT_EQ(lists.imageFileTypes, (std::vector<std::string>{"png", "jpg", "jpeg", "psd", "svg", "gof"}));
    EXPECT_EQ(lists.videoFileTypes, (std::vector<std::string>{"mp3", "mov", "mp4"}));
    EXPECT_EQ(lists.documentsFileTypes,
        (std::vector<std::string>{"doc", "docx", "ppt", "pptx", "pdf", "key", "pps", "xls", "xlsx"}));
    EXPECT_EQ(openPanelFileTypes(),
        (std::vector<std::string>{"png", "jpg", "jpeg", "psd", "svg", "gof", "mp3", "mov", "mp4", "doc",
            "docx", "ppt", "pptx", "pdf", "key", "pps", "xls", "xlsx"}));
}

TEST(FileTypesTest, ExtensionIsWhatFollowsTheLastDot)
{
    EXPECT_EQ(fileExtension("Report.final.pdf"), "pdf");
    EXPECT_EQ(fileExtension("archive.tar.gz"), "gz");
    EXPECT_EQ(fileExtension("README"), "README");
    EXPECT_EQ(fileExtension("name."), "");
    EXPECT_EQ(fileExtension("name.."), "");
    EXPECT_EQ(fileExtension(".png"), "png");
    EXPECT_EQ(fileExtension("."), "");
    EXPECT_EQ(fileExtension(""), "");
}

TEST(FileTypesTest, TypeIsCategoryAndExtension)
{
    EXPECT_EQ(typeOf("photo.jpeg"), "image/jpeg");
    EXPECT_EQ(typeOf("clip.mp3"), "video/mp3");
    EXPECT_EQ(typeOf("anim.gof"), "image/gof");
    EXPECT_EQ(typeOf("slides.key"), "document/key");
    EXPECT_EQ(typeOf("table.xlsx"), "document/xlsx");
    EXPECT_EQ(typeOf("png"), "image/png");
}

TEST(FileTypesTest, FileOfNoCategoryIsOfTypeNull)
{
    EXPECT_EQ(typeOf("photo.JPG"), "(null)/JPG");
    EXPECT_EQ(typeOf("anim.gif"), "(null)/gif");
    EXPECT_EQ(typeOf("archive.tar.gz"), "(null)/gz");
    EXPECT_EQ(typeOf("Makefile"), "(null)/Makefile");
    EXPECT_EQ(typeOf("name."), "(null)/");
    EXPECT_EQ(typeOf("photo.png "), "(null)/png ");
}

TEST(FileTypesTest, EveryTypeOfTheOpenPanelHasACategory)
{
    for (const std::string& extension : openPanelFileTypes())
        EXPECT_TRUE(fileCategory(extension, panelFileTypes())) << extension;
}

TEST(FileTypesTest, ImagesComeBeforeVideosAndVideosBeforeDocuments)
{
    EXPECT_EQ(fileCategory("x", {{"x"}, {"x"}, {"x"}}), FileCategory::image);
    EXPECT_EQ(fileCategory("x", {{}, {"x"}, {"x"}}), FileCategory::video);
    EXPECT_EQ(fileCategory("x", {{}, {}, {"x"}}), FileCategory::document);
    EXPECT_EQ(fileCategory("x", {}), std::nullopt);
}

} // namespace companion::testing
