#include "tavlen/device/detail/ExcludedApps.h"

#include <algorithm>
#include <array>

namespace tavlen {

namespace {

constexpr auto kExcludedApps = std::to_array<std::string_view>({
    "com.apple.AccountAuthenticationDialog",
    "com.apple.AdSheet",
    "com.apple.AdSheetPad",
    "com.apple.AdSheetPhone",
    "com.apple.AskPermissionUI",
    "com.apple.CompassCalibrationViewService",
    "com.apple.Copilot",
    "com.apple.CoreAuthUI",
    "com.apple.DataActivation",
    "com.apple.DemoApp",
    "com.apple.Diagnostics",
    "com.apple.FacebookAccountMigrationDialog",
    "com.apple.GameController",
    "com.apple.HealthPrivacyService",
    "com.apple.InCallService",
    "com.apple.MailCompositionService",
    "com.apple.MobileReplayer",
    "com.apple.MusicUIService",
    "com.apple.PassbookUIService",
    "com.apple.PhotosViewService",
    "com.apple.PreBoard",
    "com.apple.PrintKit.Print-Center",
    "com.apple.SharedWebCredentialViewService",
    "com.apple.ShoeboxUIService",
    "com.apple.SiriViewService",
    "com.apple.TencentWeiboAccountMigrationDialog",
    "com.apple.TextInput.kbd",
    "com.apple.TrustMe",
    "com.apple.WebContentFilter.remoteUI.WebContentAnalysisUI",
    "com.apple.WebSheet",
    "com.apple.WebViewService",
    "com.apple.appleaccount.AACredentialRecoveryDialog",
    "com.apple.datadetectors.DDActionsService",
    "com.apple.family",
    "com.apple.fieldtest",
    "com.apple.gamecenter.GameCenterUIService",
    "com.apple.iad.iAdOptOut",
    "com.apple.ios.StoreKitUIService",
    "com.apple.iosdiagnostics",
    "com.apple.iphoneos.iPodOut",
    "com.apple.mobileme.fmip1",
    "com.apple.mobilesms.compose",
    "com.apple.mobilesms.notification",
    "com.apple.purplebuddy",
    "com.apple.quicklook.quicklookd",
    "com.apple.share",
    "com.apple.social.remoteui.SocialUIService",
    "com.apple.uikit.PrintStatus",
    "com.apple.webapp",
    "com.apple.webapp1",
});
static_assert(std::is_sorted(kExcludedApps.begin(), kExcludedApps.end()));

}  // namespace

std::span<const std::string_view> excludedApps() { return kExcludedApps; }

bool isExcludedApp(std::string_view bundleID) {
  return std::binary_search(kExcludedApps.begin(), kExcludedApps.end(), bundleID);
}

}  // namespace tavlen
