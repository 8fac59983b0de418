// Lists the phones and reads the versions into arrays of the script's own.
var driver = new ActiveXObject("ovNo2.covNo2");
var models = ["left", "over"], media = [], serials = [], addresses = [], names = [], types = [];
WScript.Echo("content access " + driver.GetApiVersion());
WScript.Echo("suite " + driver.GetPCSuiteVersion());
WScript.Echo("result " + driver.GetConnectedDevices(models, media, serials, addresses, names, types));
for (var i = 0; i < models.length; i++) {
    WScript.Echo(models[i] + "|" + media[i] + "|" + serials[i] + "|" + names[i] + "|" + types[i]);
}
try {
    driver.GetConnectedDevices("no array", media, serials, addresses, names, types);
} catch (error) {
    WScript.Echo("error " + (error.number & 0xFFFF));
}
