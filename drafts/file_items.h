// The items of the two trees that show files, the chooser and the drafts pane, and their images.
#pragma once

#include "platform/owners.h"

// Numbers of the images, 16 x 16 each.
enum FileImage { kFolderImage = 0, kOpenFolderImage = 1, kFileImage = 2, kRootImage = 3 };

// False when the images cannot be made. The tree uses them until it goes; the caller keeps them.
[[nodiscard]] bool LoadFileImages(ImageListOwner& images, HINSTANCE instance);
void UseFileImages(HWND tree, const ImageListOwner& images);

// An item below `parent`, which is also its data. Null when it cannot be inserted.
HTREEITEM InsertItem(HWND tree, HTREEITEM parent, HTREEITEM after, const wchar_t* text, FileImage image,
                     FileImage selectedImage);

// The item that TVM_GETNEXTITEM finds for a TVGN_ value; null when there is none.
HTREEITEM RelatedItem(HWND tree, HTREEITEM item, WPARAM relation);

// Text, cut to `capacity` units, and image of an item. False when it has gone.
[[nodiscard]] bool ReadItem(HWND tree, HTREEITEM item, wchar_t* text, int capacity, int& image);
