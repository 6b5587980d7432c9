// The popups of a menu bar's drop-downs. While one is open, left, right and the mouse over another drop-down
// lead to that one's popup; a click on the open one's button closes it, one on a plain button presses that.
// For the user-interface thread; one popup is open at a time.
#pragma once

#include "platform/desktop/bar.h"

// Opens the popup of drop-down `index`, and those that the user goes on to, and blocks until the last one has
// closed; posts the command that was chosen. The first item is selected when a key opened the popup
// (`byKey`). Messages are handled meanwhile, so the bar may have ended on return.
void OpenPopups(MenuBar& bar, int index, bool byKey);

bool IsPopupOpen();

// Closes the open popup, if any. To be called before the window it belongs to is destroyed: a popup destroyed
// with its owner may leave OpenPopups waiting for ever.
void ClosePopup();

// The bar has ended. OpenPopups does not touch it again.
void ForgetBar(const MenuBar& bar);
