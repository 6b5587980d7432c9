#include "drafts/file_items.h"

#include "resources/resource.h"
#include "text/messages.h"

bool LoadFileImages(ImageListOwner& images, HINSTANCE instance) {
    constexpr int kSize = 16;
    constexpr COLORREF kGround = RGB(255, 0, 255);
    images.Reset(
        ImageList_LoadImage(instance, MAKEINTRESOURCEW(IDB_FILES), kSize, 0, kGround, IMAGE_BITMAP, 0));
    return static_cast<bool>(images);
}

void UseFileImages(HWND tree, const ImageListOwner& images) {
    SendMessageW(tree, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images.Get()));
}

HTREEITEM InsertItem(HWND tree, HTREEITEM parent, HTREEITEM after, const wchar_t* text, FileImage image,
                     FileImage selectedImage) {
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM;
    insert.item.pszText = const_cast<wchar_t*>(text);
    insert.item.iImage = image;
    insert.item.iSelectedImage = selectedImage;
    insert.item.lParam = reinterpret_cast<LPARAM>(parent);
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

HTREEITEM RelatedItem(HWND tree, HTREEITEM item, WPARAM relation) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

bool ReadItem(HWND tree, HTREEITEM item, wchar_t* text, int capacity, int& image) {
    TVITEMW data = {};
    data.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_HANDLE;
    data.hItem = item;
    data.pszText = text;
    data.cchTextMax = capacity;
    if (!SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data))) return false;
    CopyCut(text, static_cast<std::size_t>(capacity), data.pszText);  // the tree may point to its own text
    image = data.iImage;
    return true;
}
