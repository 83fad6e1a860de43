@call "%~dp0register.cmd" remove %1
