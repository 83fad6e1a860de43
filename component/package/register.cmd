@echo off
rem Registers palvex for the current user; no administrator rights are needed.
rem   register.cmd                    for the current user
rem   register.cmd machine            for everybody, from an administrator's prompt
rem   register.cmd remove [machine]   takes it back
setlocal
set failed=0
set options=/s
set scope=/n /i:user
set who=%1
set done=While palvex is registered, leave this folder where it is.
if "%1"=="remove" set options=/s /u
if "%1"=="remove" set who=%2
if "%1"=="remove" set done=palvex is no longer registered; this folder may go.
if "%who%"=="machine" set scope=

set native=win32
if "%PROCESSOR_ARCHITECTURE%"=="AMD64" set native=win64
call :register "%SystemRoot%\System32\regsvr32.exe" "%~dp0%native%\palvex.dll"
if exist "%SystemRoot%\SysWOW64\regsvr32.exe" call :register "%SystemRoot%\SysWOW64\regsvr32.exe" "%~dp0win32\palvex.dll"
if "%failed%"=="0" echo Done. %done%
exit /b %failed%

:register
%1 %options% %scope% %2
if not errorlevel 1 exit /b 0
echo Windows refused: regsvr32 %options% %scope% %2
set failed=1
exit /b 1
