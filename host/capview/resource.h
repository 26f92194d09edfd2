#ifndef HOST_CAPVIEW_RESOURCE_H_
#define HOST_CAPVIEW_RESOURCE_H_

// Numbers that the resource script and the program share. A program that drives
// the window by messages, as the test does, knows its controls and commands by
// them.

/* What is in the resources, and the controls of the dialogs. */
#define IDI_CAPVIEW 1
#define IDR_MENU 1
#define IDR_ACCELERATORS 1
#define IDD_ASK 1
#define IDD_KEYS 2
#define IDC_ASK_LABEL 100
#define IDC_ASK_TEXT 101

/* The controls of the window. */
#define IDC_CONNECTIONS 201
#define IDC_PDUS 202
#define IDC_MESSAGES 203
#define IDC_FILTER_LABEL 204
#define IDC_FILTER 205
#define IDC_ROWS 206
#define IDC_TREE 207
#define IDC_HEX 208
#define IDC_STATUS 209
#define IDC_FINDINGS 210
#define IDC_TABS 211
#define IDC_DATA_TREE 212
#define IDC_DATA_HEX 213
#define IDC_CONTEXTS 214
#define IDC_TIMES 215

/* The commands, menu by menu. */
#define IDM_OPEN 1001
#define IDM_FOLLOW 1002
#define IDM_RELOAD 1003
#define IDM_STOP 1004
#define IDM_SAVE_ROW 1005
#define IDM_SAVE_ALL 1006
#define IDM_PRINT_ROW 1007
#define IDM_PRINT_ALL 1008
#define IDM_EXIT 1009
#define IDM_SAVE_OBJECTS 1010
#define IDM_OPEN_FOLDER 1011
#define IDM_COPY_LINE 1020
#define IDM_COPY_VALUE 1021
#define IDM_COPY_SUBTREE 1022
#define IDM_COPY_BYTES 1023
#define IDM_FILTER 1024
#define IDM_FIND 1025
#define IDM_FIND_NEXT 1026
#define IDM_FIND_PREVIOUS 1027
#define IDM_GO_TO_ROW 1028
#define IDM_NEXT_ROW 1029
#define IDM_PREVIOUS_ROW 1030
#define IDM_JUMP 1031
#define IDM_PDU_VIEW 1040
#define IDM_MESSAGE_VIEW 1041
#define IDM_CONNECTION 1042
#define IDM_NOTES 1043
#define IDM_SHOW_MESSAGE_DATA 1044
#define IDM_EXPAND_ALL 1045
#define IDM_COLLAPSE_ALL 1046
#define IDM_LARGER 1047
#define IDM_SMALLER 1048
#define IDM_CLEAN_STREAMS 1049
#define IDM_AS_CAPTURED 1050
#define IDM_TALLER_LIST 1051
#define IDM_SHORTER_LIST 1052
#define IDM_WIDER_TREE 1053
#define IDM_NARROWER_TREE 1054
#define IDM_DECODE_TAB 1055
#define IDM_DATA_SET_TAB 1056
#define IDM_CONTEXTS_TAB 1057
#define IDM_TIME_BAR 1058
#define IDM_TIME_COLUMNS 1059
#define IDM_SORT_LATENCY 1062
#define IDM_SORT_THROUGHPUT 1063
#define IDM_SORT_NONE 1064
#define IDM_KEYS 1060
#define IDM_ABOUT 1061
#define IDM_NO_RECENT 1070
#define IDM_FIRST_RECENT 1071  /* eight of them */
#define IDM_FIRST_SECTION 1081 /* sections 1 to 8 */

#endif /* HOST_CAPVIEW_RESOURCE_H_ */
