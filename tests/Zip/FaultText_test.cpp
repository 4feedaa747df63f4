#include "Core/FaultText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Zip/ZipFault.h"

namespace {

/** Each number that the system or a file's reader may give, for each kind of thing. */
TEST(FaultText, SaysOfEveryStatusWhatIsWrongAndWhatCanBeDone) {
    for (int kindL = 0; kindL <= static_cast<int>(FaultOf::kSoundOutput); ++kindL)
        for (int errnoL = 1; errnoL < 134; ++errnoL) {
            const OSErr err = MapErrno(errnoL);
            if (ErrorText(errnoL) == "Unknown error" || err == abortErr || err == userCanceledErr) continue;
            const std::string text = FaultText(err, static_cast<FaultOf>(kindL), "the thing");
            EXPECT_TRUE(text.starts_with("“the thing”: ")) << text;
            EXPECT_TRUE(text.ends_with(" (" + std::to_string(Number(err)) + ")")) << text;
            EXPECT_GE(std::ranges::count(text, '.'), 2) << text;   // a sentence for each of the two
            if (Number(err) > 0) {
                EXPECT_NE(text.find(::strerrordesc_np(errnoL)), std::string::npos) << text;
            }
        }
    const struct {
        OSErr err;
        const char *fileZ, *wordsZ;
    } kCases[] = {
        {MapErrno(EACCES), "/a/b.mp3", "“/a/b.mp3”: Permission denied. "},
        {MapErrno(ELOOP), "/a/b.cdg", "“/a/b.cdg”: Too many levels of symbolic links"},
        {MapErrno(ENAMETOOLONG), "/a/b", "“/a/b”: File name too long. "},
        {StatusOf(ZipFault::kNotZip), "/a/b.zip", "“/a/b.zip”: The file is damaged, or it is no zip "},
        {StatusOf(ZipFault::kData), "/a/b.ZIP", "“/a/b.ZIP”: The zip is damaged"},
        {StatusOf(ZipFault::kEncrypted), "/a/b.zip", "“/a/b.zip”: The zip is encrypted. "},
        {paramErr, "/a/b.MP3", "“/a/b.MP3”: The file is damaged, or it is no MP3 file. "},
        {paramErr, "/a/b.mp4", "“/a/b.mp4”: The file is damaged, or it is no movie "},
        {static_cast<OSErr>(-12345), "", "Something failed that has no name here. "},
    };
    for (const auto& c : kCases)
        EXPECT_TRUE(FaultText(c.err, c.fileZ).starts_with(c.wordsZ)) << FaultText(c.err, c.fileZ);
}

}   // namespace
