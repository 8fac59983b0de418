' Lists the attached phones:  cscript //nologo list-phones.vbs
Option Explicit
Dim driver, models, media, serials, addresses, names, types, i
Set driver = CreateObject("ovNo2.covNo2")
If driver.GetConnectedDevices(models, media, serials, addresses, names, types) < 0 Then
    WScript.Echo "The phones cannot be listed." : WScript.Quit 1
End If
For i = 0 To UBound(models)
    WScript.Echo models(i) & vbTab & serials(i) & vbTab & names(i)
Next
