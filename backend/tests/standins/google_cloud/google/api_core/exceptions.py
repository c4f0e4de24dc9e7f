"""The errors of calls, by the status of HTTP and of gRPC."""

from http import HTTPStatus
from typing import Any, Optional

from grpc import StatusCode


class GoogleAPIError(Exception):
    """Whatever goes wrong."""


class RetryError(GoogleAPIError):
    """Trying again was given up."""

    def __init__(self, message: str, cause: BaseException) -> None:
        super().__init__(message)
        self.message, self._cause = message, cause

    @property
    def cause(self) -> BaseException:
        """What happened last."""
        return self._cause


class GoogleAPICallError(GoogleAPIError):
    """A call failed. Its text begins with the status of HTTP."""

    code: Optional[int] = None
    grpc_status_code: Optional[StatusCode] = None

    def __init__(
        self,
        message: str,
        errors: Any = (),
        details: Any = (),
        response: Any = None,
        error_info: Any = None,
    ) -> None:
        super().__init__(message)
        self.message = message
        self._errors, self._details, self._response = errors, details, response
        self._error_info = error_info or {}

    def __str__(self) -> str:
        text = f"{int(self.code)} {self.message}" if self.code else f"None {self.message}"
        return f"{text} {self.details}" if self.details else text

    @property
    def errors(self) -> list[Any]:
        """Further errors."""
        return list(self._errors)

    @property
    def details(self) -> list[Any]:
        """What the service added."""
        return list(self._details)

    @property
    def reason(self) -> Optional[str]:
        """Such as SERVICE_DISABLED."""
        return self._error_info.get("reason")

    @property
    def domain(self) -> Optional[str]:
        """Whose reason it is."""
        return self._error_info.get("domain")

    @property
    def metadata(self) -> Optional[dict[str, str]]:
        """What belongs to the reason."""
        return self._error_info.get("metadata")

    @property
    def response(self) -> Any:
        """What was answered."""
        return self._response


class ClientError(GoogleAPICallError):
    """4xx."""


class ServerError(GoogleAPICallError):
    """5xx."""


class BadRequest(ClientError):
    code = HTTPStatus.BAD_REQUEST


class InvalidArgument(BadRequest):
    grpc_status_code = StatusCode.INVALID_ARGUMENT


class FailedPrecondition(BadRequest):
    grpc_status_code = StatusCode.FAILED_PRECONDITION


class OutOfRange(BadRequest):
    grpc_status_code = StatusCode.OUT_OF_RANGE


class Unauthorized(ClientError):
    code = HTTPStatus.UNAUTHORIZED


class Unauthenticated(Unauthorized):
    grpc_status_code = StatusCode.UNAUTHENTICATED


class Forbidden(ClientError):
    code = HTTPStatus.FORBIDDEN


class PermissionDenied(Forbidden):
    grpc_status_code = StatusCode.PERMISSION_DENIED


class NotFound(ClientError):
    code = HTTPStatus.NOT_FOUND
    grpc_status_code = StatusCode.NOT_FOUND


class Conflict(ClientError):
    code = HTTPStatus.CONFLICT


class AlreadyExists(Conflict):
    grpc_status_code = StatusCode.ALREADY_EXISTS


class Aborted(Conflict):
    grpc_status_code = StatusCode.ABORTED


class TooManyRequests(ClientError):
    code = HTTPStatus.TOO_MANY_REQUESTS


class ResourceExhausted(TooManyRequests):
    grpc_status_code = StatusCode.RESOURCE_EXHAUSTED


class Cancelled(ClientError):
    code = 499
    grpc_status_code = StatusCode.CANCELLED


class InternalServerError(ServerError):
    code = HTTPStatus.INTERNAL_SERVER_ERROR
    grpc_status_code = StatusCode.INTERNAL


class Unknown(ServerError):
    grpc_status_code = StatusCode.UNKNOWN


class MethodNotImplemented(ServerError):
    code = HTTPStatus.NOT_IMPLEMENTED
    grpc_status_code = StatusCode.UNIMPLEMENTED


class ServiceUnavailable(ServerError):
    code = HTTPStatus.SERVICE_UNAVAILABLE
    grpc_status_code = StatusCode.UNAVAILABLE


class GatewayTimeout(ServerError):
    code = HTTPStatus.GATEWAY_TIMEOUT


class DeadlineExceeded(GatewayTimeout):
    grpc_status_code = StatusCode.DEADLINE_EXCEEDED
