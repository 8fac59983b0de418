@echo off
rem Registers the phone driver that lies beside this script: for the whole machine when that is allowed, else for you.
rem
rem   register.cmd              with the phone software that is installed on this machine
rem   register.cmd simulator    the same; where none is installed, the simulated phones take its place
rem
rem The component is a 32-bit one; a 64-bit Windows keeps its tools for those in SysWOW64.
setlocal
set regsvr32=%SystemRoot%\System32\regsvr32.exe
if exist "%SystemRoot%\SysWOW64\regsvr32.exe" set regsvr32=%SystemRoot%\SysWOW64\regsvr32.exe

"%regsvr32%" /s "%~dp0ovNo2.dll"
if errorlevel 1 (
    echo The phone driver could not be registered.
    exit /b 1
)
echo The phone driver is registered.
if /i not "%~1"=="simulator" exit /b 0

reg query "HKLM\SOFTWARE\PC Connectivity Solution" /v PlatformPath /reg:32 >nul 2>&1
if not errorlevel 1 (
    echo This machine has phone software already; it is left as it is.
    exit /b 0
)
reg add "HKLM\SOFTWARE\PC Connectivity Solution" /v PlatformPath /t REG_SZ /d "%~dp0simulator" /reg:32 /f >nul
if errorlevel 1 (
    echo The simulated phones could not be attached: that needs an administrator.
    exit /b 1
)
echo The simulated phones are attached.
