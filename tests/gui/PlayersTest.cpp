// The controls that draw or show files: what is really seen on the screen.
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/notebook.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include <algorithm>

#include "GuiFixture.h"
#include "controls/AnimationPlayer.h"
#include "controls/Pictures.h"
#include "controls/RichTextView.h"
#include "controls/WxColours.h"
#include "controls/xpProgressBar.h"
#include "platform/files/LocalPath.h"

namespace quillmoor {
namespace {

const std::string kAssets = QUILLMOOR_ASSETS;

class PlayersTest : public FrameTest {
 protected:
  template <typename Control>
  Control* shown(Control* control) {
    auto* const all = new wxBoxSizer(wxVERTICAL);
    all->Add(control, wxSizerFlags().Border(wxALL, 30));
    frame->SetSizer(all);
    frame->Show();
    frame->Layout();
    EXPECT_TRUE(waitUntil([&] { return control->IsShownOnScreen() && control->GetClientSize().y > 5; }));
    return control;
  }
  /// The control as it is drawn.
  static wxImage drawn(wxWindow* control) {
    wxSize size = control->GetClientSize();
    size.IncTo(wxSize(1, 1));  // nothing at all while the frame finds its size
    wxBitmap bitmap(size);
    wxMemoryDC memory(bitmap);
    wxClientDC client(control);
    memory.Blit(wxPoint(0, 0), size, &client, wxPoint(0, 0));
    memory.SelectObject(wxNullBitmap);
    return bitmap.ConvertToImage();
  }
  static Rgb pixel(const wxImage& image, int x, int y) {
    return {image.GetRed(x, y), image.GetGreen(x, y), image.GetBlue(x, y)};
  }
  static int countOf(const wxImage& image, Rgb colour) {
    int count = 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) count += pixel(image, x, y) == colour ? 1 : 0;
    }
    return count;
  }
  static bool same(const wxImage& a, const wxImage& b) {
    const auto size = static_cast<std::size_t>(a.GetWidth()) * static_cast<std::size_t>(a.GetHeight()) * 3;
    return a.GetSize() == b.GetSize() && std::equal(a.GetData(), a.GetData() + size, b.GetData());
  }
  /// One colour and nothing else.
  static bool isEmpty(wxWindow* control) {
    const wxImage image = drawn(control);
    return countOf(image, pixel(image, 0, 0)) == image.GetWidth() * image.GetHeight();
  }
};

constexpr Rgb kServersCase{0x6F, 0x84, 0x98};

TEST_F(PlayersTest, PlaysTheAnimationOverTheWindowsBackground) {
  auto* const player = shown(new AnimationPlayer(frame));
  ASSERT_TRUE(player->Open(kAssets + "/Server.avi")) << player->error();
  EXPECT_EQ(player->GetBestSize(), player->FromDIP(wxSize(272, 60)));
  ASSERT_TRUE(waitUntil([&] { return countOf(drawn(player), kServersCase) > 100; }));
  const wxImage still = drawn(player);
  EXPECT_EQ(countOf(still, {255, 0, 255}), 0) << "the colour that stands for the background";

  player->Play();
  EXPECT_TRUE(player->IsPlaying());
  EXPECT_TRUE(waitUntil([&] { return !same(drawn(player), still); }));
  player->Stop();
  EXPECT_FALSE(player->IsPlaying());
  EXPECT_TRUE(waitUntil([&] { return same(drawn(player), still); })) << "back at the first frame";
  player->Close();
  ASSERT_TRUE(waitUntil([&] { return isEmpty(player); }));
  EXPECT_EQ(pixel(still, 0, 0), pixel(drawn(player), 0, 0));
}

TEST_F(PlayersTest, ShowsNothingForAFileThatIsMissingOrDamaged) {
  const testing::TemporaryFolder folder;
  const std::string good = testing::contentsOf(LocalPath(kAssets + "/Server.avi"));
  testing::writeFile(folder / "Half.avi", good.substr(0, good.size() / 2));
  auto* const player = shown(new AnimationPlayer(frame));
  wxTestingModalHook noBox;
  for (const char* name : {"Half.avi", "Missing.avi"}) {
    ASSERT_TRUE(player->Open(kAssets + "/Server.avi"));
    player->Play();
    ASSERT_TRUE(waitUntil([&] { return !isEmpty(player); }));
    EXPECT_FALSE(player->Open(LocalPathText(folder / name)));
    EXPECT_NE(player->error().find(name), std::string::npos) << player->error();
    player->Play();
    EXPECT_FALSE(player->IsPlaying());
    EXPECT_TRUE(waitUntil([&] { return isEmpty(player); })) << name;
  }
}

TEST_F(PlayersTest, DrawsProgressInItsColour) {
  auto* const bar = new xpProgressBar(frame, wxID_ANY, wxDefaultPosition, wxSize(200, 20));
  bar->SetColor(wxColour(0, 0, 200));
  bar->SetValue(50);
  shown(bar);
  // Blue where the bar is; in the gradient every shade has more blue than red.
  const auto isFilled = [&](int x, int y) {
    const Rgb colour = pixel(drawn(bar), x, y);
    return colour.blue > colour.red + 60;
  };
  EXPECT_TRUE(waitUntil([&] { return isFilled(90, 10) && !isFilled(110, 10); }));
  bar->SetMax(200);
  EXPECT_TRUE(waitUntil([&] { return isFilled(40, 10) && !isFilled(60, 10); })) << "not drawn anew";
  bar->SetValue(1000);
  EXPECT_EQ(std::to_string(bar->GetValue()) + " " + bar->GetText(), "200 100%");
  EXPECT_TRUE(waitUntil([&] { return isFilled(190, 10); }));
}

TEST_F(PlayersTest, ShowsTheGuideWhenItsTabIsOpened) {
  auto* const book = new wxNotebook(frame, wxID_ANY, wxDefaultPosition, wxSize(500, 300));
  book->AddPage(new wxWindow(book, wxID_ANY), "before");
  auto* const view = new RichTextView(book, wxID_ANY, "Help");
  book->AddPage(view, "Help");
  shown(book);
  EXPECT_TRUE(view->LoadFile(kAssets + "/Help.rtf"));
  EXPECT_TRUE(view->GetValue().empty());
  book->SetSelection(1);
  EXPECT_TRUE(waitUntil([&] { return view->GetValue().Contains("The first backup"); }));
  EXPECT_FALSE(view->IsEditable());
  EXPECT_EQ(view->GetInsertionPoint(), 0);

  wxTextAttr title;
  ASSERT_TRUE(view->GetStyle(view->GetValue().Find("Quillmoor") + 1, title));
  EXPECT_EQ(FromWx(title.GetTextColour()),
            ReadableOn({47, 131, 168}, FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW))));
  EXPECT_EQ(title.GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
}

TEST_F(PlayersTest, SaysInTheViewWhatIsWrongWithAText) {
  const testing::TemporaryFolder folder;
  testing::writeFile(folder / "Broken.rtf", "{\\rtf1 half");
  auto* const view = shown(new RichTextView(frame, wxID_ANY, "Help"));
  wxTestingModalHook noBox;
  EXPECT_FALSE(view->LoadFile(LocalPathText(folder / "Broken.rtf")));
  EXPECT_TRUE(waitUntil([&] { return view->GetValue().Contains("Broken.rtf: byte 11: the text ends"); }));
  EXPECT_FALSE(view->LoadFile(LocalPathText(folder / "Missing.rtf")));
  EXPECT_TRUE(view->GetValue().Trim(false).empty());
}

TEST(Pictures, AreThereInEverySize) {
  for (const char* name : {"panes/profiles", "panes/backup", "panes/settings", "panes/options", "panes/help",
                           "status/connected", "status/disconnected"}) {
    EXPECT_EQ(Picture(name).GetDefaultSize(), wxSize(32, 32)) << name;
    EXPECT_EQ(Picture(name).GetBitmap(wxSize(64, 64)).GetSize(), wxSize(64, 64)) << name;
  }
  for (const char* name : {"icons/tray", "browser/Cdup", "browser/FolderClose", "browser/FolderLink",
                           "browser/Link", "browser/TextFile", "browser/ZipFile", "browser/ExeFile",
                           "browser/ImageFile", "browser/HelpFile", "browser/File"})
    EXPECT_EQ(Picture(name).GetDefaultSize(), wxSize(16, 16)) << name;
  EXPECT_FALSE(Picture("panes/profile").IsOk());
  EXPECT_EQ(ApplicationIcon().GetIconCount(), 7U);
}

}  // namespace
}  // namespace quillmoor
