// Ids of everything in pelnor.rc. Included by the resource compiler too: plain #defines only.
#pragma once

// Icon and bitmaps. The strips of the menu bars and of the lists hold square images side by side.
#define IDI_PELNOR 108
#define IDB_GROUP_BAR 107    // 1 image of 16 x 16
#define IDB_SUBJECT_BAR 132  // 6 images of 16 x 16
#define IDB_ARTICLE_BAR 141  // 2 images of 16 x 16

// Marks of the subject view's rows, 10 x 10.
#define IDB_MARK_READ 115
#define IDB_MARK_LOW 137
#define IDB_MARK_HIGH 139

// Menus, and the menu bars (RCDATA) whose drop-downs open their popups.
#define IDM_ARTICLE 145
#define IDM_SUBJECT 147
#define IDM_GROUP 149
#define IDM_DRAFTS 151

// Accelerator tables. Only the first is loaded.
#define IDA_MAIN 131
#define IDA_EXIT_ONLY 132
#define IDA_COPY_EXIT 133

// Commands.
#define IDC_EXIT 40001
#define IDC_PROPERTIES 40002
#define IDC_GET_ARTICLES 40003
#define IDC_DELETE_READ 40004
#define IDC_ABOUT 40005
#define IDC_TOGGLE_READ 40006
#define IDC_SUBSCRIBE 40007
#define IDC_CATCH_UP 40011
#define IDC_COPY 40012
#define IDC_VIEW_READ 40013
#define IDC_KEYWORDS 40014
#define IDC_SHOW_HEADER 40015
#define IDC_LEVEL_HIGH 40016
#define IDC_LEVEL_NORMAL 40017
#define IDC_LEVEL_LOW 40018
#define IDC_DRAFTS 40019
#define IDC_LEAVE_DRAFTS 40020
#define IDC_COMPOSE 40021
#define IDC_CHOOSE_EXE 40022
#define IDC_BACK_TO_GROUPS 40077
#define IDC_BACK_TO_SUBJECTS 40082
// Drop-down buttons of the menu bars.
#define IDC_DROP_GROUP 40084
#define IDC_DROP_GROUP_TOOLS 40085
#define IDC_DROP_SUBJECT_TOOLS 40086
#define IDC_DROP_SUBJECT 40087
#define IDC_DROP_ARTICLE 40088
#define IDC_DROP_ARTICLE_TOOLS 40089

// Child windows of the frame.
#define IDW_GROUP_VIEW 101
#define IDW_ARTICLE_VIEW 104
#define IDW_SUBJECT_VIEW 106
#define IDW_SUBJECT_SCROLL 105
#define IDW_SUBJECT_HEADER 109
#define IDW_ARTICLE_SCROLL 103

// Dialogs and their controls.
#define IDD_ABOUT 100
#define IDD_PROGRESS 103
#define IDD_CATCH_UP 120
#define IDD_PASSWORD 125

#define IDC_PROGRESS_GROUP 1003
#define IDC_PROGRESS_BAR 1004
#define IDC_CATCH_UP_LOCAL 1019
#define IDC_CATCH_UP_SERVER 1020
#define IDC_PASSWORD_EDIT 1025
#define IDC_PASSWORD_USER 1026

// Strings. "(%d)" takes the last error.
#define IDS_INIT_DATA_FAILED 7
#define IDS_SWITCH_VIEW_FAILED 9
#define IDS_NO_MEMORY 11
#define IDS_CONNECTION_REFUSED 13
#define IDS_CANNOT_CONNECT 15
#define IDS_NO_ANSWER 17
#define IDS_DELETE_NO_GROUPS 19
#define IDS_INIT_INDEX_FILE_FAILED 21
#define IDS_INIT_INDEX_FAILED 23
#define IDS_MARK_READ_FAILED 25
#define IDS_CATCH_UP_SERVER_FAILED 27
#define IDS_ASK_DELETE_READ 29
#define IDS_DELETE_READ_FAILED 31
#define IDS_INVALID_INDEX 33
#define IDS_SEND_FAILED 35
#define IDS_RECEIVE_FAILED 37
#define IDS_WRONG_USER 39
#define IDS_WRONG_PASSWORD 41
#define IDS_OPEN_INDEX_FAILED 43
#define IDS_NO_NEW_ARTICLES 45
#define IDS_WRITE_INDEX_FAILED 47
#define IDS_CANNOT_ENTER_GROUP 49
#define IDS_UNEXPECTED_REPLY 51
#define IDS_ARTICLES_FETCHED 53
#define IDS_SAVE_SETTINGS_FAILED 55
#define IDS_OPEN_FILE_FAILED 57
#define IDS_LIMIT_REACHED 61
#define IDS_RECEIVE_INCOMPLETE 63
#define IDS_WRITE_LOG_FAILED 65
#define IDS_DOWNLOAD_DONE 67
#define IDS_NO_THREAD 69
#define IDS_NOT_YET 71
#define IDS_GROUP_LIST_FAILED 97

// Column headings of the group view.
#define IDS_COLUMN_GROUP 105
#define IDS_COLUMN_UNREAD 107
#define IDS_COLUMN_ARTICLES 109
#define IDS_COLUMN_STATUS 111
#define IDS_COLUMN_CURRENT 113
#define IDS_COLUMN_MAXIMUM 115

// Column headings of the subject view.
#define IDS_COLUMN_DATE 117
#define IDS_COLUMN_FROM 119
#define IDS_COLUMN_SUBJECT 121
#define IDS_COLUMN_MARKS 141

// Captions of the menu-bar drop-downs.
#define IDS_BAR_GROUP 201
#define IDS_BAR_SUBJECT 203
#define IDS_BAR_ARTICLE 205
#define IDS_BAR_TOOLS 207
