' Reads the versions, sets properties, and meets the standard errors.
Option Explicit
Dim driver, result
Set driver = CreateObject("ovNo2.covNo2")
WScript.Echo TypeName(driver)
WScript.Echo "content access " & driver.GetApiVersion
WScript.Echo "suite " & driver.GetPCSuiteVersion
driver.Meeting_ = "Besprechung"
driver.GetAllFields_ = True
WScript.Echo "statuses " & TypeName(driver.SetStatuses_(Array("done", "open")))
WScript.Echo "uids " & driver.GetAllUids(2, result) & " " & TypeName(result)
On Error Resume Next
driver.Connect 8
WScript.Echo "too few " & Err.Number
Err.Clear
driver.EndFS 1
WScript.Echo "too many " & Err.Number
Err.Clear
driver.Connect "x", 8
WScript.Echo "wrong type " & Err.Number
Err.Clear
driver.DeleteEverything
WScript.Echo "unknown " & Err.Number
