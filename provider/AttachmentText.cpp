#include "provider/AttachmentText.h"

#include <initializer_list>
#include <string>

namespace {

constexpr WCHAR kSeparator = '/';

CStringW Joined(std::initializer_list<WideView> pieces) {
    CStringW text;
    for (const WideView piece : pieces) {
        text += piece;
    }
    return text;
}

template <typename Integer>
CStringW Decimal(Integer number) {
    const std::string digits = std::to_string(number);
    return CStringW(digits.begin(), digits.end());
}

CStringW ChildPath(WideView parentPath, WideView component) {
    return parentPath.empty() ? CStringW(component) : Joined({parentPath, "/"_w, component});
}

}  // namespace

CStringW AttachmentPath(WideView parentPath, LONG number) {
    return ChildPath(parentPath, Decimal(number));
}

CStringW EmbeddedItemPath(WideView parentPath, LONG number) {
    return ChildPath(parentPath, Joined({"VxEMBITEM"_w, Decimal(number)}));
}

WideView FirstComponents(WideView path, std::size_t count) {
    if (count == 0) {
        return path.substr(0, 0);
    }
    std::size_t end = path.find(kSeparator);
    for (std::size_t seen = 1; seen < count && end != WideView::npos; ++seen) {
        end = path.find(kSeparator, end + 1);
    }
    return path.substr(0, end);
}

CStringW AttachmentListName(WideView name) {
    return Joined({"//vxAtt:"_w, name});
}

CStringW AttachmentListItemId(EVxItemType type, WideView path) {
    return Joined({"//vxAttId:"_w, Decimal(static_cast<int>(type)), ":"_w, path});
}

CStringW AttachmentListFileId(WideView path) {
    return Joined({"//vxAttId:B:"_w, path});
}

CStringW AttachmentListSmimeId(WideView path) {
    return Joined({"//vxAttId:"_w, "//vxAttId:S:"_w, path});
}

CStringW FileReference(WideView path) {
    return Joined({"File:"_w, path});
}

CStringW SectionReference(std::uint64_t size, WideView fileName) {
    return Joined({"vx:%%"_w, Decimal(size), "%%"_w, fileName});
}
