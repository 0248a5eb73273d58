#Requires -RunAsAdministrator
<#
.SYNOPSIS
Installs the telemetry cleanup and runs it once a day, or removes it again.

.DESCRIPTION
Copies the unpacked archive to the program folder, which only administrators can write, and registers the scheduled task
\Corvo\Telemetry Cleanup. The task runs as LOCAL SERVICE with rights on the data directory and the log directory alone.

.PARAMETER Remove
Removes the task and the program folder. Databases and logs stay.
#>
[CmdletBinding()]
param(
    [string]$ProgramDirectory = "$env:ProgramFiles\Corvo\Telemetry Cleanup",
    [string]$DataDirectory = "$env:ProgramData\Corvo\Telemetry\Data",
    [string]$LogDirectory = "$env:ProgramData\Corvo\Telemetry\Logs",
    [switch]$Remove
)
Set-StrictMode -Version Latest
$ErrorActionPreference = 'Stop'

$taskName = 'Telemetry Cleanup'
$taskPath = '\Corvo\'

function Remove-Cleanup {
    Unregister-ScheduledTask -TaskName $taskName -TaskPath $taskPath -Confirm:$false -ErrorAction SilentlyContinue
    if (Test-Path -LiteralPath $ProgramDirectory) {
        Remove-Item -LiteralPath $ProgramDirectory -Recurse -Force
    }
}

function Grant-LocalService([string]$Directory) {
    New-Item -ItemType Directory -Path $Directory -Force | Out-Null
    # By number: the account's name is translated.
    & icacls.exe $Directory /grant '*S-1-5-19:(OI)(CI)M' /Q | Out-Null
    if ($LASTEXITCODE -ne 0) { throw "icacls failed for $Directory" }
}

function ConvertTo-XmlText([string]$Text) { [System.Security.SecurityElement]::Escape($Text) }

function Install-Cleanup {
    $source = Join-Path $PSScriptRoot 'bin'
    New-Item -ItemType Directory -Path $ProgramDirectory -Force | Out-Null
    Copy-Item -Path (Join-Path $source '*') -Destination $ProgramDirectory -Force
    Grant-LocalService $DataDirectory
    Grant-LocalService $LogDirectory

    $task = Get-Content -LiteralPath (Join-Path $PSScriptRoot 'corvo-telemetry-cleanup.xml') -Raw -Encoding UTF8
    $task = $task.Replace('@PROGRAM@', (ConvertTo-XmlText (Join-Path $ProgramDirectory 'corvo-telemetry-host.exe')))
    $task = $task.Replace('@DATA_DIRECTORY@', (ConvertTo-XmlText $DataDirectory))
    $task = $task.Replace('@LOG_FILE@', (ConvertTo-XmlText (Join-Path $LogDirectory 'cleanup.log')))
    # The text is UTF-16 from here on.
    $task = $task -replace '^<\?xml[^>]*\?>\s*', ''
    Register-ScheduledTask -TaskName $taskName -TaskPath $taskPath -Xml $task -Force | Out-Null
}

if ($Remove) { Remove-Cleanup } else { Install-Cleanup }
