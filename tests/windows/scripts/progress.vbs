' Reads a phone book with a progress control made by the script.
Option Explicit
Class ProgressControl
    Public value
End Class
Dim driver, progress, fields(3, 4), items, groups, model, phone, i
Set driver = CreateObject("ovNo2.covNo2")
Set progress = New ProgressControl
progress.value = 0
For i = 0 To 3
    fields(i, 4) = i
Next
model = "Nokia 6230i"
phone = "356300020000026"
WScript.Echo "contacts " & driver.NokiaGetAddressBookItems(model, phone, "", items, fields, groups, , progress)
WScript.Echo "steps " & progress.value
