' Assigns to the variables of a running call from inside the progress control.
Option Explicit
Dim driver, progress, fields(3, 4), items, groups, model, phone, i, made
Class ProgressControl
    Public Property Get value
        value = 0
    End Property
    Public Property Let value(steps)
        items = Empty
        items = made
        model = 5
        groups = "none"
    End Property
End Class
Set driver = CreateObject("ovNo2.covNo2")
For i = 0 To 3
    fields(i, 4) = i
Next
made = "made by the script"
For i = 1 To 3
    groups = Empty
    model = "Nokia 6230i"
    phone = "356300020000026"
    Set progress = Nothing
    If i > 1 Then Set progress = New ProgressControl
    WScript.Echo driver.NokiaGetAddressBookItems(model, phone, "", items, fields, groups, , progress) & _
        " " & TypeName(items) & " " & model & " " & TypeName(groups)
Next
