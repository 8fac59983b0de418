@echo off
rem Takes away what register.cmd has registered.
setlocal
set regsvr32=%SystemRoot%\System32\regsvr32.exe
if exist "%SystemRoot%\SysWOW64\regsvr32.exe" set regsvr32=%SystemRoot%\SysWOW64\regsvr32.exe

rem Other phone software than the simulated phones beside this script stays.
for /f "tokens=2*" %%a in ('reg query "HKLM\SOFTWARE\PC Connectivity Solution" /v PlatformPath /reg:32') do (
    if /i "%%b"=="%~dp0simulator" reg delete "HKLM\SOFTWARE\PC Connectivity Solution" /v PlatformPath /reg:32 /f >nul
)

"%regsvr32%" /s /u "%~dp0ovNo2.dll"
if errorlevel 1 (
    echo The phone driver could not be unregistered.
    exit /b 1
)
echo The phone driver is no longer registered.
