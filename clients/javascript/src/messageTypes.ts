/** The numbers of requests, replies and events. */
export const messageType = {
    getSettings: 7,
    isSelected: 18,
    openSettings: 19,
    logOut: 22,
    setSettings: 24,
    settingChanged: 25,
} as const;
