// The calls that generated code makes into the run time.
export const SEND = "objc_send";
export const ORIG = "objc_orig";
export const BOX = "objc_box";
export const DICTIONARY = "objc_dictionary";
export const SELECTOR = "objc_selector";

export const RUNTIME_NAMES = new Set([SEND, ORIG, BOX, DICTIONARY, SELECTOR]);
